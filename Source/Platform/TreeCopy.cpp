#include "Platform/TreeCopy.h"

#include "Platform/Descriptor.h"
#include "Platform/DirectoryEntries.h"

#include <climits>
#include <string>
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

// Owner before mode: a change of owner drops the set-id bits. Times last: everything else changes them.
Result<void> copyMetadata(int from, int to, const struct stat& status) {
    if (::fchown(to, status.st_uid, status.st_gid) < 0 || ::fchmod(to, status.st_mode & 07777) < 0) {
        return lastError();
    }
    if (auto copied = copyExtendedAttributes(from, to); !copied) {
        return copied;
    }
    const timespec times[] = {status.st_atim, status.st_mtim};
    return checked(::futimens(to, times));
}

Result<void> copyContent(int from, int to) {
    std::vector<char> buffer(size_t{1} << 18U);
    for (;;) {
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count <= 0) {
            return checked(count);
        }
        for (ssize_t done = 0; done < count;) {
            const ssize_t written = ::write(to, buffer.data() + done, static_cast<size_t>(count - done));
            if (written < 0) {
                return lastError();
            }
            done += written;
        }
    }
}

Result<void> copyFile(int fromParent, const char* fromName, int toParent, const char* toName) {
    const Descriptor from(::openat(fromParent, fromName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status{};
    if (!from || ::fstat(from.get(), &status) < 0) {
        return lastError();
    }
    const Descriptor to(
        ::openat(toParent, toName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!to) {
        return lastError();
    }
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
    } else if (::mknodat(toParent, toName, status.st_mode, status.st_rdev) < 0) {
        return lastError();
    }
    if (::fchownat(toParent, toName, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    const timespec times[] = {status.st_atim, status.st_mtim};
    return checked(::utimensat(toParent, toName, times, AT_SYMLINK_NOFOLLOW));
}

Result<void> copyEntry(int fromParent, const char* fromName, int toParent, const char* toName);

Result<void> copyFolder(int fromParent, const char* fromName, int toParent, const char* toName) {
    const Descriptor from(::openat(fromParent, fromName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status{};
    if (!from || ::fstat(from.get(), &status) < 0 || ::mkdirat(toParent, toName, 0700) < 0) {
        return lastError();
    }
    const Descriptor to(::openat(toParent, toName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!to) {
        return lastError();
    }
    std::vector<std::string> names;
    if (!forEachEntry(from.get(), [&](const DirectoryEntry& entry) { names.emplace_back(entry.name); })) {
        return lastError();
    }
    for (const auto& name : names) {
        if (auto copied = copyEntry(from.get(), name.c_str(), to.get(), name.c_str()); !copied) {
            return copied;
        }
    }
    return copyMetadata(from.get(), to.get(), status);
}

Result<void> copyEntry(int fromParent, const char* fromName, int toParent, const char* toName) {
    struct stat status{};
    if (::fstatat(fromParent, fromName, &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    if (S_ISDIR(status.st_mode)) {
        return copyFolder(fromParent, fromName, toParent, toName);
    }
    if (S_ISREG(status.st_mode)) {
        return copyFile(fromParent, fromName, toParent, toName);
    }
    return copySpecial(fromParent, fromName, toParent, toName, status);
}

} // namespace

Result<void> copyTree(int fromParent, const char* fromName, int toParent, const char* toName) {
    struct stat status{};
    if (::fstatat(toParent, toName, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return failure(EEXIST);
    }
    return copyEntry(fromParent, fromName, toParent, toName);
}

} // namespace platform
