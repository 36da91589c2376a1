#include "Platform/Files/TreeCopy.h"

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/DirectoryEntries.h"
#include "Platform/Files/TreeRemoval.h"

#include <algorithm>
#include <climits>
#include <string>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace platform {

namespace {

Result<void> checked(long outcome) {
    if (outcome < 0) {
        return lastError();
    }
    return {};
}

Result<void> copyExtendedAttributes(int from, int to) {
    const ssize_t listSize = ::flistxattr(from, nullptr, 0);
    if (listSize < 0) {
        return errno == ENOTSUP ? Result<void>{} : lastError();
    }
    std::string names(static_cast<size_t>(listSize), '\0');
    const ssize_t filled = ::flistxattr(from, names.data(), names.size());
    if (filled < 0) {
        return lastError();
    }
    for (size_t start = 0; start < static_cast<size_t>(filled);
         start += std::strlen(names.c_str() + start) + 1) {
        const char* name = names.c_str() + start;
        const ssize_t size = ::fgetxattr(from, name, nullptr, 0);
        std::string value(size > 0 ? static_cast<size_t>(size) : 0, '\0');
        if (size < 0 || ::fgetxattr(from, name, value.data(), value.size()) < 0 ||
            ::fsetxattr(to, name, value.data(), value.size(), 0) < 0) {
            return lastError();
        }
    }
    return {};
}

// Owner first: a change of owner drops the set-id bits and capabilities. Mode after the attributes, which
// take the right to write. Times last: everything else changes them.
Result<void> copyMetadata(int from, int to, const struct stat& status) {
    if (::fchown(to, status.st_uid, status.st_gid) < 0) {
        return lastError();
    }
    if (auto copied = copyExtendedAttributes(from, to); !copied) {
        return copied;
    }
    const timespec times[] = {status.st_atim, status.st_mtim};
    if (::fchmod(to, status.st_mode & 07777) < 0 || ::futimens(to, times) < 0) {
        return lastError();
    }
    return {};
}

Result<void> writeAll(int to, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(to, bytes, count);
        if (written < 0 && errno != EINTR) {
            return lastError();
        }
        const size_t done = written > 0 ? static_cast<size_t>(written) : 0;
        bytes += done;
        count -= done;
    }
    return {};
}

// Copies from both files' positions; fewer bytes when the file ends before.
Result<void> copyBytes(int from, int to, off_t count) {
    std::vector<char> buffer(size_t{1} << 18U);
    while (count > 0) {
        const size_t wanted = std::min(buffer.size(), static_cast<size_t>(count));
        const ssize_t got = ::read(from, buffer.data(), wanted);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return checked(got);
        }
        if (auto written = writeAll(to, buffer.data(), static_cast<size_t>(got)); !written) {
            return written;
        }
        count -= got;
    }
    return {};
}

// Goes from one stretch of data to the next: holes stay holes.
Result<void> copyContent(int from, int to) {
    for (off_t end = 0;;) {
        const off_t data = ::lseek(from, end, SEEK_DATA);
        if (data < 0 && errno == ENXIO) {
            break;
        }
        end = data < 0 ? -1 : ::lseek(from, data, SEEK_HOLE);
        if (end < 0 || ::lseek(from, data, SEEK_SET) < 0 || ::lseek(to, data, SEEK_SET) < 0) {
            return lastError();
        }
        if (auto copied = copyBytes(from, to, end - data); !copied) {
            return copied;
        }
    }
    struct stat status = {};
    if (::fstat(from, &status) < 0) {
        return lastError();
    }
    return checked(::ftruncate(to, status.st_size));
}

// Copies one tree from the outside in. A level is a pair of folders on the way; the names still to copy are
// kept, so that outer levels can give their descriptors up.
class Copier {
  public:
    Result<void> run(int fromParent, const char* fromName, int toParent, const char* toName) {
        auto copied = copyEntry(fromParent, fromName, toParent, toName);
        while (copied && !_levels.empty()) {
            copied = advance();
        }
        if (!copied && _created) {
            // What was begun is worth nothing, and whether it can be removed changes nothing about the error.
            _levels.clear();
            std::ignore = removeTree(toParent, toName);
        }
        return copied;
    }

  private:
    struct Level {
        Descriptor from;
        Descriptor to;
        struct stat status = {};
        FolderIdentity toIdentity;
        std::vector<std::string> names;
    };

    Result<void> copyEntry(int fromParent, const char* fromName, int toParent, const char* toName) {
        struct stat status = {};
        if (::fstatat(fromParent, fromName, &status, AT_SYMLINK_NOFOLLOW) < 0) {
            return lastError();
        }
        if (S_ISDIR(status.st_mode)) {
            return enterFolder(fromParent, fromName, toParent, toName);
        }
        if (S_ISREG(status.st_mode)) {
            return copyFile(fromParent, fromName, toParent, toName);
        }
        return copySpecial(fromParent, fromName, toParent, toName, status);
    }

    Result<void> copyFile(int fromParent, const char* fromName, int toParent, const char* toName) {
        const Descriptor from(::openat(fromParent, fromName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status = {};
        if (!from || ::fstat(from.get(), &status) < 0) {
            return lastError();
        }
        if (!S_ISREG(status.st_mode)) {
            return failure(ESTALE);
        }
        const Descriptor to(
            ::openat(toParent, toName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!to) {
            return lastError();
        }
        _created = true;
        if (auto copied = copyContent(from.get(), to.get()); !copied) {
            return copied;
        }
        return copyMetadata(from.get(), to.get(), status);
    }

    Result<void> copySpecial(int fromParent, const char* fromName, int toParent, const char* toName,
                             const struct stat& status) {
        if (S_ISLNK(status.st_mode)) {
            std::string target(PATH_MAX, '\0');
            const ssize_t length = ::readlinkat(fromParent, fromName, target.data(), target.size());
            if (length < 0) {
                return lastError();
            }
            target.resize(static_cast<size_t>(length));
            if (::symlinkat(target.c_str(), toParent, toName) < 0) {
                return lastError();
            }
        } else if (::mknodat(toParent, toName, (status.st_mode & S_IFMT) | 0600, status.st_rdev) < 0) {
            return lastError();
        }
        _created = true;
        if (::fchownat(toParent, toName, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) < 0) {
            return lastError();
        }
        if (!S_ISLNK(status.st_mode) &&
            ::fchmodat(toParent, toName, status.st_mode & 07777, AT_SYMLINK_NOFOLLOW) < 0) {
            return lastError();
        }
        const timespec times[] = {status.st_atim, status.st_mtim};
        return checked(::utimensat(toParent, toName, times, AT_SYMLINK_NOFOLLOW));
    }

    Result<void> enterFolder(int fromParent, const char* fromName, int toParent, const char* toName) {
        Level level{.from = Descriptor(::openat(fromParent, fromName, readFolderFlags))};
        if (!level.from || ::fstat(level.from.get(), &level.status) < 0) {
            return lastError();
        }
        if (!_levels.empty() && FolderIdentity::of(level.status) == _levels.front().toIdentity) {
            return failure(EINVAL);
        }
        if (::mkdirat(toParent, toName, 0700) < 0) {
            return lastError();
        }
        _created = true;
        level.to = Descriptor(::openat(toParent, toName, readFolderFlags));
        struct stat status = {};
        if (!level.to || ::fstat(level.to.get(), &status) < 0 ||
            !forEachEntry(level.from.get(),
                          [&](const DirectoryEntry& entry) { level.names.emplace_back(entry.name); })) {
            return lastError();
        }
        level.toIdentity = FolderIdentity::of(status);
        _levels.push_back(std::move(level));
        if (_levels.size() > openLevels) {
            Level& outer = _levels[_levels.size() - 1 - openLevels];
            outer.from.reset();
            outer.to.reset();
        }
        return {};
    }

    Result<void> advance() {
        Level& level = _levels.back();
        if (level.names.empty()) {
            return leaveFolder();
        }
        const std::string name = std::move(level.names.back());
        level.names.pop_back();
        return copyEntry(level.from.get(), name.c_str(), level.to.get(), name.c_str());
    }

    // The way up is found before the mode is set, which may bar it.
    Result<void> leaveFolder() {
        const Level left = std::move(_levels.back());
        _levels.pop_back();
        if (!_levels.empty() && !_levels.back().from) {
            Level& outer = _levels.back();
            outer.from = FolderIdentity::of(outer.status).openAbove(left.from.get());
            outer.to = outer.toIdentity.openAbove(left.to.get());
            if (!outer.from || !outer.to) {
                return failure(ESTALE);
            }
        }
        return copyMetadata(left.from.get(), left.to.get(), left.status);
    }

    std::vector<Level> _levels;
    bool _created = false;
};

} // namespace

Result<void> copyTree(int fromParent, const char* fromName, int toParent, const char* toName) {
    struct stat status = {};
    if (::fstatat(toParent, toName, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return failure(EEXIST);
    }
    return Copier().run(fromParent, fromName, toParent, toName);
}

} // namespace platform
