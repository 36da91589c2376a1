#include "Platform/Files/DeviceRoot.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/TemporaryName.h"

#include <string>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// What files hold: reading, and writing that never leaves half a file.

namespace platform {

namespace {

// Looks before it opens: opening a device may already set something off.
Result<Descriptor> openRegularFile(int folder, const char* name, int flags) {
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    if (!S_ISREG(status.st_mode)) {
        return failure(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    Descriptor file(::openat(folder, name, flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file || ::fstat(file.get(), &status) < 0) {
        return lastError();
    }
    if (!S_ISREG(status.st_mode)) {
        return failure(EINVAL);
    }
    return file;
}

// Two that save at once never meet in one file, and a file that a crash left behind is in nobody's way.
Result<Descriptor> createTemporaryFile(int folder, std::string_view name, std::string& temporary) {
    for (;;) {
        temporary = temporaryNameFor(name);
        const int number =
            ::openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (number >= 0) {
            return Descriptor(number);
        }
        if (errno != EEXIST) {
            return lastError();
        }
    }
}

} // namespace

Result<FileHandle> FileManager::openForReading(std::string_view path) {
    auto target = _root->follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    if (target->leaf.empty()) {
        return failure(EISDIR);
    }
    auto file = openRegularFile(target->folder.get(), target->leaf.c_str(), O_RDONLY);
    if (!file) {
        return std::unexpected(file.error());
    }
    return FileHandle(std::move(*file));
}

Result<std::string> FileManager::contentsAtPath(std::string_view path, uint64_t limit) {
    auto file = openForReading(path);
    if (!file) {
        return std::unexpected(file.error());
    }
    return file->readToEnd(limit);
}

Result<FileHandle> FileManager::openForWriting(std::string_view path) {
    auto item = itemToChange(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    auto file = openRegularFile(item->parent()->descriptor(), item->name().c_str(), O_WRONLY);
    if (!file) {
        return std::unexpected(file.error());
    }
    struct stat status = {};
    if (::fstat(file->get(), &status) < 0) {
        return lastError();
    }
    if (status.st_nlink > 1) {
        return failure(EMLINK);
    }
    return FileHandle(std::move(*file));
}

Result<FileHandle> FileManager::createFileAtPath(std::string_view path, mode_t mode) {
    auto item = newItemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    const std::string& name = item->name();
    const int parent = item->parent()->descriptor();
    if (::unlinkat(parent, name.c_str(), 0) == 0) {
        // It may have been a link that led to a folder.
        forgetLastFolder();
    } else if (errno != ENOENT) {
        return lastError();
    }
    Descriptor file(
        ::openat(parent, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file) {
        return lastError();
    }
    return FileHandle(std::move(file));
}

Result<void> FileManager::writeContents(std::string_view path, std::string_view bytes) {
    return replaceContents(path, bytes, std::nullopt);
}

Result<void> FileManager::writeContents(std::string_view path, std::string_view bytes,
                                        const FileOwnership& ownership) {
    return replaceContents(path, bytes, ownership);
}

namespace {

/// Who may not give files away, or not to that user, keeps what is written all the same: a choice that is not
/// stored would cost more.
Result<void> giveTo(const FileOwnership& ownership, int file) {
    if (::fchown(file, ownership.owner, ownership.group) == 0) {
        return {};
    }
    if (errno != EPERM && errno != EINVAL) {
        return lastError();
    }
    for (const auto& [owner, group] :
         {std::pair(ownership.owner, gid_t(-1)), std::pair(uid_t(-1), ownership.group)}) {
        if (::fchown(file, owner, group) < 0 && errno != EPERM && errno != EINVAL) {
            return lastError();
        }
    }
    return {};
}

} // namespace

Result<void> FileManager::replaceContents(std::string_view path, std::string_view bytes,
                                          const std::optional<FileOwnership>& given) {
    auto item = newItemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    const int parent = item->parent()->descriptor();
    const std::string& name = item->name();
    const auto old = item->attributes();
    if (old && old->type != FileType::regular) {
        return failure(EEXIST);
    }
    if (!old && !meansAbsence(old.error())) {
        return std::unexpected(old.error());
    }
    std::string temporary;
    auto file = createTemporaryFile(parent, name, temporary);
    if (!file) {
        return std::unexpected(file.error());
    }
    auto ownership = given;
    if (!ownership && old) {
        ownership = {.owner = old->owner, .group = old->group, .permissions = old->permissions};
    }
    const auto written = [&]() -> Result<void> {
        if (ownership) {
            if (auto owned = giveTo(*ownership, file->get()); !owned) {
                return owned;
            }
        }
        if (::fchmod(file->get(), ownership.value_or(FileOwnership{}).permissions) < 0) {
            return lastError();
        }
        FileHandle handle(std::move(*file));
        if (auto done = handle.write(bytes); !done) {
            return done;
        }
        if (auto done = handle.synchronize(); !done) {
            return done;
        }
        return checked(::renameat(parent, temporary.c_str(), parent, name.c_str()));
    }();
    if (!written) {
        ::unlinkat(parent, temporary.c_str(), 0);
        return written;
    }
    // The rename itself is to survive a power cut; a file system that cannot promise it is no failure.
    const Descriptor folder(::openat(parent, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder) {
        std::ignore = ::fsync(folder.get());
    }
    return {};
}

} // namespace platform
