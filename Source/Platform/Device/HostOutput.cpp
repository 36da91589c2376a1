#include "Platform/Device/HostOutput.h"

#include "Platform/Files/Path.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

using Opened = std::expected<std::unique_ptr<HostOutput>, std::string>;

constexpr size_t pieceBytes = 65536;

// The stream that a name stands for; none for names of files.
std::optional<int> streamNamed(std::string_view path) {
    if (path == "-" || path == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    if (path == "/dev/stderr") {
        return STDERR_FILENO;
    }
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.starts_with(folder)) {
            int number = -1;
            const auto [end, error] =
                std::from_chars(path.data() + folder.size(), path.data() + path.size(), number);
            return error == std::errc() && end == path.data() + path.size() && number >= 0 ? number : -1;
        }
    }
    return std::nullopt;
}

std::unexpected<std::string> refusal(const std::string& path, const std::string& reason,
                                     std::string_view advice = "name another file") {
    return std::unexpected(fmt::format("the log cannot go to {}: {}; {}",
                                       path == "-" ? "standard output" : path, reason, advice));
}

std::unexpected<std::string> refusal(const std::string& path, int error) {
    return refusal(path, std::system_category().message(error));
}

bool isSame(const struct stat& first, const struct stat& second) {
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Whether a folder is another one or lies below it, on whatever way; yes where nobody can tell.
bool liesIn(int folder, int tree) {
    struct stat top = {};
    struct stat here = {};
    if (::fstat(tree, &top) < 0 || ::fstat(folder, &here) < 0) {
        return true;
    }
    Descriptor current(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    while (current && !isSame(here, top)) {
        Descriptor above(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat status = {};
        if (!above || ::fstat(above.get(), &status) < 0) {
            return true;
        }
        if (isSame(status, here)) {
            return false;
        }
        here = status;
        current = std::move(above);
    }
    return true;
}

Result<void> writeAll(int file, std::string_view bytes, std::optional<off_t> position) {
    while (!bytes.empty()) {
        const ssize_t count = position ? ::pwrite(file, bytes.data(), bytes.size(), *position)
                                       : ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return lastError();
        }
        const auto written = static_cast<size_t>(std::max<ssize_t>(count, 0));
        bytes.remove_prefix(written);
        position = position ? std::optional(*position + static_cast<off_t>(written)) : position;
    }
    return {};
}

// Reads until the buffer is full or the file ends; gives how much there was.
Result<size_t> readAt(int file, std::vector<char>& buffer, off_t position) {
    size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = ::pread(file, buffer.data() + filled, buffer.size() - filled,
                                      position + static_cast<off_t>(filled));
        if (count < 0 && errno != EINTR) {
            return lastError();
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return filled;
}

} // namespace

Opened HostOutput::open(const std::string& path, int tree) {
    const auto number = streamNamed(path);
    if (!number) {
        return overFile(path, tree);
    }
    const int flags = ::fcntl(*number, F_GETFL);
    Descriptor stream(flags < 0 ? -1 : ::fcntl(*number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!stream || (flags & O_ACCMODE) == O_RDONLY) {
        return refusal(path, EBADF);
    }
    return overStream(std::move(stream), path);
}

Opened HostOutput::overStream(Descriptor stream, const std::string& path) {
    Descriptor memory(::memfd_create("log", MFD_CLOEXEC));
    if (!memory) {
        return refusal(path, errno);
    }
    return std::unique_ptr<HostOutput>(new HostOutput(FileHandle(std::move(memory)), std::move(stream)));
}

Opened HostOutput::overFile(const std::string& path, int tree) {
    const size_t slash = path.rfind('/');
    const std::string folderPath = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    const Descriptor folder(::open(folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        return refusal(path, errno);
    }
    if (!isFileName(name)) {
        return refusal(path, EISDIR);
    }
    if (liesIn(folder.get(), tree)) {
        return refusal(path, "it is inside of the device's tree", "name a file outside of the device");
    }
    struct stat status = {};
    const bool isThere = ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (isThere && S_ISLNK(status.st_mode)) {
        return refusal(path, "it is a link, and could lead to another file than you mean");
    }
    constexpr int flags = O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    if (isThere && (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode))) {
        Descriptor stream(::openat(folder.get(), name.c_str(), O_WRONLY | flags));
        return stream ? overStream(std::move(stream), path) : refusal(path, errno);
    }
    Descriptor file(::openat(folder.get(), name.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | flags, 0644));
    if (!file || ::fstat(file.get(), &status) < 0) {
        return refusal(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return refusal(path, "it is no file");
    }
    if (status.st_nlink > 1) {
        return refusal(path, "it has other names, and would be changed under all of them");
    }
    return std::unique_ptr<HostOutput>(new HostOutput(FileHandle(std::move(file)), Descriptor()));
}

void HostOutput::start(FileWriting writing) {
    // What a stream gets waits in memory anyway.
    _file.setWriting(_stream ? FileWriting::gathered : writing);
    note(checked(::ftruncate(_file.descriptor(), 0)));
    note(_file.seekToEnd());
}

void HostOutput::write(std::string_view text, std::string_view more) {
    note(_file.write(text, more));
}

void HostOutput::insertAtLine(std::string_view text, unsigned long line) {
    note(_file.flush());
    const auto start = startOfLine(line);
    if (!start) {
        // A shorter text has no such line.
        note(start.error().value() == ENODATA ? Result<void>() : std::unexpected(start.error()));
        return;
    }
    const std::string inserted = std::string(text).append("\n");
    if (const auto moved = moveEnd(*start, inserted.size()); !moved) {
        note(moved);
        return;
    }
    note(writeAll(_file.descriptor(), inserted, *start));
    note(_file.seekToEnd());
}

void HostOutput::finish() {
    note(_file.flush());
    if (!_stream) {
        return;
    }
    std::vector<char> piece(pieceBytes);
    for (off_t position = 0;;) {
        const auto filled = readAt(_file.descriptor(), piece, position);
        if (!filled) {
            return note(std::unexpected(filled.error()));
        }
        if (*filled == 0) {
            return;
        }
        if (const auto written = writeAll(_stream.get(), {piece.data(), *filled}, std::nullopt); !written) {
            return note(written);
        }
        position += static_cast<off_t>(*filled);
    }
}

void HostOutput::note(const Result<void>& outcome) {
    if (!outcome && !_error) {
        _error = outcome.error();
    }
}

Result<off_t> HostOutput::startOfLine(unsigned long line) const {
    std::vector<char> piece(pieceBytes);
    unsigned long found = 1;
    for (off_t position = 0; found < line;) {
        const auto filled = readAt(_file.descriptor(), piece, position);
        if (!filled || *filled == 0) {
            return filled ? failure(ENODATA) : std::unexpected(filled.error());
        }
        for (size_t index = 0; index < *filled; ++index) {
            if (piece[index] == '\n' && ++found == line) {
                return position + static_cast<off_t>(index) + 1;
            }
        }
        position += static_cast<off_t>(*filled);
    }
    return 0;
}

// From the end on: the file grows before anything in it is written over, so that a full disk costs nothing.
Result<void> HostOutput::moveEnd(off_t start, size_t distance) {
    struct stat status = {};
    if (::fstat(_file.descriptor(), &status) < 0) {
        return lastError();
    }
    std::vector<char> piece(pieceBytes);
    for (off_t end = status.st_size; end > start;) {
        const off_t from = std::max(start, end - static_cast<off_t>(pieceBytes));
        piece.resize(static_cast<size_t>(end - from));
        const auto filled = readAt(_file.descriptor(), piece, from);
        if (!filled) {
            return std::unexpected(filled.error());
        }
        if (const auto moved =
                writeAll(_file.descriptor(), {piece.data(), *filled}, from + static_cast<off_t>(distance));
            !moved) {
            return moved;
        }
        end = from;
    }
    return {};
}

} // namespace platform
