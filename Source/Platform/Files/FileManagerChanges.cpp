// What changes a tree by path, but for the content of files.
#include "Platform/Files/FileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

// Empty where there is nothing before the last component.
std::string_view pathBeforeLastComponent(std::string_view path) {
    path.remove_suffix(path.size() - (path.find_last_not_of('/') + 1));
    return path.substr(0, path.find_last_of('/') + 1);
}

} // namespace

Result<void> FileManager::removeItemAtPath(std::string_view path) {
    auto item = itemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    auto removed = item->remove();
    forgetLastFolder();
    return removed;
}

Result<void> FileManager::fromItemTo(std::string_view from, std::string_view to,
                                     Result<void> (Item::*work)(const Item& target) const) {
    auto source = itemAtPath(from);
    if (!source) {
        return std::unexpected(source.error());
    }
    auto target = newItemAtPath(to);
    if (!target) {
        return std::unexpected(target.error());
    }
    return (*source.*work)(*target);
}

Result<void> FileManager::moveItemAtPath(std::string_view from, std::string_view to) {
    auto moved = fromItemTo(from, to, &Item::moveTo);
    forgetLastFolder();
    return moved;
}

Result<void> FileManager::copyItemAtPath(std::string_view from, std::string_view to) {
    return fromItemTo(from, to, &Item::copyTo);
}

Result<void> FileManager::createDirectoryAtPath(std::string_view path, IntermediateFolders intermediate,
                                                mode_t mode) {
    auto item = newItemAtPath(path);
    const std::string_view parent = pathBeforeLastComponent(path);
    if (!item && item.error().value() == ENOENT && intermediate == IntermediateFolders::create &&
        !parent.empty()) {
        if (auto created = createDirectoryAtPath(parent, intermediate, mode); !created) {
            return created;
        }
        item = newItemAtPath(path);
    }
    const auto made = item ? checked(::mkdirat(item->parent()->descriptor(), item->name().c_str(), mode))
                           : Result<void>(std::unexpected(item.error()));
    // What may only be looked at says so before it says that something is there.
    const bool mayBeThere = !made && (made.error().value() == EEXIST || made.error().value() == EROFS);
    bool isDirectory = false;
    if (mayBeThere && intermediate == IntermediateFolders::create && fileExistsAtPath(path, &isDirectory) &&
        isDirectory) {
        return {};
    }
    return made;
}

Result<void> FileManager::createSymbolicLinkAtPath(std::string_view path, std::string_view destination) {
    auto item = newItemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    if (destination.contains('\0')) {
        return failure(EINVAL);
    }
    return checked(
        ::symlinkat(std::string(destination).c_str(), item->parent()->descriptor(), item->name().c_str()));
}

Result<void> FileManager::setOwnerOfItemAtPath(std::string_view path, std::optional<uid_t> owner,
                                               std::optional<gid_t> group) {
    auto item = itemToChange(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    return checked(::fchownat(item->parent()->descriptor(), item->name().c_str(),
                              owner.value_or(static_cast<uid_t>(-1)), group.value_or(static_cast<gid_t>(-1)),
                              AT_SYMLINK_NOFOLLOW));
}

Result<void> FileManager::setPermissionsOfItemAtPath(std::string_view path, mode_t permissions) {
    auto item = itemToChange(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    return checked(
        ::fchmodat(item->parent()->descriptor(), item->name().c_str(), permissions, AT_SYMLINK_NOFOLLOW));
}

Result<void> FileManager::setModificationDateOfItemAtPath(std::string_view path, timespec modified) {
    auto item = itemToChange(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, modified};
    return checked(
        ::utimensat(item->parent()->descriptor(), item->name().c_str(), times, AT_SYMLINK_NOFOLLOW));
}

} // namespace platform
