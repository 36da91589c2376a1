#include "Platform/Files/FileHandle.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include <sys/uio.h>

namespace platform {

namespace {

iovec pieceOf(std::string_view bytes) {
    return {.iov_base = const_cast<char*>(bytes.data()), .iov_len = bytes.size()};
}

void takeWritten(std::string_view& bytes, size_t& written) {
    const size_t taken = std::min(written, bytes.size());
    bytes.remove_prefix(taken);
    written -= taken;
}

} // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept
    : _descriptor(std::move(other._descriptor))
    , _writing(other._writing)
    , _gathered(std::exchange(other._gathered, {})) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    if (this != &other) {
        std::ignore = flush();
        _descriptor = std::move(other._descriptor);
        _writing = other._writing;
        _gathered = std::exchange(other._gathered, {});
    }
    return *this;
}

FileHandle::~FileHandle() {
    std::ignore = flush();
}

void FileHandle::setWriting(FileWriting writing) {
    std::ignore = flush();
    _writing = writing;
}

Result<void> FileHandle::write(std::string_view bytes, std::string_view more) {
    if (_writing == FileWriting::direct) {
        return writeNow(bytes, more);
    }
    _gathered.append(bytes).append(more);
    return _gathered.size() < gatheredBytes ? Result<void>() : flush();
}

// What could not be written is not tried again: on a full disk it would grow without end.
Result<void> FileHandle::flush() {
    const std::string_view bytes = _gathered;
    auto written = writeNow(bytes, {});
    _gathered.clear();
    return written;
}

Result<void> FileHandle::writeNow(std::string_view bytes, std::string_view more) {
    while (!bytes.empty() || !more.empty()) {
        const iovec pieces[] = {pieceOf(bytes), pieceOf(more)};
        const ssize_t count = ::writev(_descriptor.get(), pieces, 2);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return lastError();
        }
        auto written = static_cast<size_t>(count);
        takeWritten(bytes, written);
        takeWritten(more, written);
    }
    return {};
}

Result<void> FileHandle::seekToEnd() {
    if (auto flushed = flush(); !flushed) {
        return flushed;
    }
    if (::lseek(_descriptor.get(), 0, SEEK_END) < 0) {
        return lastError();
    }
    return {};
}

Result<std::string> FileHandle::readToEnd(uint64_t limit) {
    if (auto flushed = flush(); !flushed) {
        return std::unexpected(flushed.error());
    }
    constexpr size_t chunk = 65536;
    std::string content;
    for (;;) {
        const size_t old = content.size();
        content.resize(old + chunk);
        const ssize_t count = ::read(_descriptor.get(), content.data() + old, chunk);
        content.resize(old + static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return lastError();
        }
        if (count == 0) {
            return content;
        }
        if (content.size() > limit) {
            return failure(EFBIG);
        }
    }
}

Result<std::string> FileHandle::readUpTo(size_t count) {
    if (auto flushed = flush(); !flushed) {
        return std::unexpected(flushed.error());
    }
    std::string content(count, '\0');
    size_t size = 0;
    while (size < count) {
        const ssize_t read = ::read(_descriptor.get(), content.data() + size, count - size);
        if (read < 0 && errno != EINTR) {
            return lastError();
        }
        if (read == 0) {
            break;
        }
        size += static_cast<size_t>(std::max<ssize_t>(read, 0));
    }
    content.resize(size);
    return content;
}

Result<void> FileHandle::synchronize() {
    if (auto flushed = flush(); !flushed) {
        return flushed;
    }
    if (::fsync(_descriptor.get()) < 0) {
        return lastError();
    }
    return {};
}

} // namespace platform
