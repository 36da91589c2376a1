#include "Platform/FileHandle.h"

#include <algorithm>

namespace platform {

Result<void> FileHandle::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(_descriptor.get(), bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return lastError();
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return {};
}

Result<void> FileHandle::seekToEnd() {
    if (::lseek(_descriptor.get(), 0, SEEK_END) < 0) {
        return lastError();
    }
    return {};
}

Result<std::string> FileHandle::readToEnd(uint64_t limit) {
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

Result<void> FileHandle::synchronize() {
    if (::fsync(_descriptor.get()) < 0) {
        return lastError();
    }
    return {};
}

} // namespace platform
