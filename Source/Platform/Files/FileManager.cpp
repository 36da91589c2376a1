#include "Platform/Files/FileManager.h"

#include "Platform/Files/DeviceRoot.h"

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace platform {

namespace {

struct SplitPath {
    std::string_view folder;
    std::string_view name;
};

// The last component and what stands before it; "." names the folder itself.
SplitPath split(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    const size_t slash = path.rfind('/');
    const SplitPath parts = slash == std::string_view::npos
                                ? SplitPath{".", path}
                                : SplitPath{path.substr(0, slash == 0 ? 1 : slash), path.substr(slash + 1)};
    return parts.name.empty() || parts.name == ".." ? SplitPath{path, "."} : parts;
}

// Empty where there is nothing before the last component.
std::string_view pathBeforeLastComponent(std::string_view path) {
    path.remove_suffix(path.size() - (path.find_last_not_of('/') + 1));
    return path.substr(0, path.find_last_of('/') + 1);
}

std::string joinedNames(const std::vector<std::string>& names) {
    std::string path;
    for (const auto& name : names) {
        path += '/';
        path += name;
    }
    return path.empty() ? "/" : path;
}

Result<FileAttributes> attributesOf(int folder, const char* name) {
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    return FileAttributes::from(status);
}

} // namespace

FileManager::FileManager(std::shared_ptr<DeviceRoot> root)
    : _root(std::move(root)) {}

Result<FileManager> FileManager::atRoot(const std::string& hostFolder, PathResolution resolution) {
    auto root = DeviceRoot::open(hostFolder, resolution);
    if (!root) {
        return std::unexpected(root.error());
    }
    return FileManager(std::move(*root));
}

Result<void> FileManager::lookOnly() {
    return _root->lookOnly();
}

bool FileManager::mayChange() const {
    return _root->access() == Access::change;
}

Result<void> FileManager::changeCurrentDirectoryPath(std::string_view path) {
    return _root->changeCurrentDirectory(path);
}

std::string FileManager::currentDirectoryPath() const {
    return joinedNames(_root->current()->names);
}

int FileManager::rootDescriptor() const {
    return _root->rootDescriptor();
}

int FileManager::currentDirectoryDescriptor() const {
    return _root->currentFolder()->descriptor();
}

Result<Item> FileManager::itemAtPath(std::string_view path) {
    const auto [folder, name] = split(path);
    if (path.empty() || path.contains('\0')) {
        return failure(ENOENT);
    }
    if (folder == "." && name != ".") {
        return Item(_root->currentFolder(), name);
    }
    auto parent = folderAtPath(folder);
    if (!parent) {
        return std::unexpected(parent.error());
    }
    return Item(std::move(*parent), name);
}

Result<Item> FileManager::itemToChange(std::string_view path) {
    auto item = itemAtPath(path);
    const auto may = item ? item->mayChange() : Result<void>();
    return may ? std::move(item) : std::unexpected(may.error());
}

Result<Item> FileManager::newItemAtPath(std::string_view path) {
    auto item = itemToChange(path);
    if (!item || !_root->targetOfMissingLink(item->name())) {
        return item;
    }
    struct stat top = {};
    struct stat parent = {};
    if (::fstat(_root->rootDescriptor(), &top) < 0 || ::fstat(item->parent()->descriptor(), &parent) < 0) {
        return lastError();
    }
    if (top.st_dev == parent.st_dev && top.st_ino == parent.st_ino) {
        return failure(EEXIST);
    }
    return item;
}

Result<Item> FileManager::itemBelow(const std::shared_ptr<const Folder>& folder,
                                    std::string_view relativePath) {
    const size_t slash = relativePath.rfind('/');
    const std::string_view name = relativePath.substr(slash == std::string_view::npos ? 0 : slash + 1);
    if (name == "..") {
        return failure(EINVAL);
    }
    if (slash == std::string_view::npos) {
        return Item(folder, name);
    }
    const std::string_view parent = relativePath.substr(0, slash);
    // Nothing is found in a folder that has been removed since, and what a new one in its place holds is not
    // meant.
    if (isLastFolder(folder, parent)) {
        return Item(_lastFolder, name);
    }
    const uint64_t generation = _root->generation();
    auto opened = keepLastFolder(folder, parent, generation, _root->openBelow(folder->descriptor(), parent));
    if (!opened) {
        return std::unexpected(opened.error());
    }
    return Item(std::move(*opened), name);
}

Result<std::shared_ptr<const Folder>> FileManager::folderAtPath(std::string_view path) {
    // Another program may have removed it and made a new one in its place.
    struct stat status = {};
    if (isLastFolder(nullptr, path) && ::fstat(_lastFolder->descriptor(), &status) == 0 &&
        status.st_nlink > 0) {
        return _lastFolder;
    }
    const uint64_t generation = _root->generation();
    return keepLastFolder(nullptr, path, generation, _root->openFolder(path));
}

bool FileManager::isLastFolder(const std::shared_ptr<const Folder>& base, std::string_view path) const {
    return _lastFolder && _lastBase == base && _lastPath == path && _lastGeneration == _root->generation();
}

Result<std::shared_ptr<const Folder>> FileManager::keepLastFolder(std::shared_ptr<const Folder> base,
                                                                  std::string_view path, uint64_t generation,
                                                                  Result<Descriptor> opened) {
    if (!opened) {
        return std::unexpected(opened.error());
    }
    _lastBase = std::move(base);
    _lastPath = path;
    _lastGeneration = generation;
    _lastFolder = std::make_shared<const Folder>(std::move(*opened), _root->access());
    return _lastFolder;
}

void FileManager::forgetLastFolder() {
    _lastFolder.reset();
    _lastBase.reset();
    _root->foldersChanged();
}

Result<FileAttributes> FileManager::attributesOfItemAtPath(std::string_view path) {
    auto item = itemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    return item->attributes();
}

Result<FileAttributes> FileManager::attributesOfTargetAtPath(std::string_view path) {
    auto target = _root->follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    return attributesOf(target->folder.get(), target->leaf.empty() ? "." : target->leaf.c_str());
}

bool FileManager::fileExistsAtPath(std::string_view path, bool* isDirectory) {
    const auto attributes = attributesOfTargetAtPath(path);
    if (isDirectory != nullptr) {
        *isDirectory = attributes && attributes->type == FileType::directory;
    }
    return attributes.has_value();
}

Result<void> FileManager::checkAccess(std::string_view path, int mode) const {
    auto target = _root->follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    return checked(::faccessat(target->folder.get(), target->leaf.empty() ? "." : target->leaf.c_str(), mode,
                               AT_EACCESS | AT_SYMLINK_NOFOLLOW));
}

Result<void> FileManager::checkWritableAtPath(std::string_view path) const {
    const auto writable = checkAccess(path, W_OK);
    return writable && !mayChange() ? failure(EROFS) : writable;
}

bool FileManager::isWritableFileAtPath(std::string_view path) {
    return checkWritableAtPath(path).has_value();
}

bool FileManager::isExecutableFileAtPath(std::string_view path) {
    return checkAccess(path, X_OK).has_value();
}

Result<std::vector<std::string>> FileManager::contentsOfDirectoryAtPath(std::string_view path) {
    auto folder = folderAtPath(path);
    if (!folder) {
        return std::unexpected(folder.error());
    }
    return (*folder)->entries();
}

std::unique_ptr<DirectoryEnumerator> FileManager::enumeratorAtPath(std::string_view path) {
    auto folder = folderAtPath(path);
    return folder ? (*folder)->enumerate() : nullptr;
}

Result<FileSystemAttributes> FileManager::attributesOfFileSystemForPath(std::string_view path) {
    auto target = _root->follow(path);
    if (!target) {
        return std::unexpected(target.error());
    }
    struct statvfs status = {};
    if (::fstatvfs(target->folder.get(), &status) < 0) {
        return lastError();
    }
    return FileSystemAttributes{.size = uint64_t{status.f_blocks} * status.f_frsize,
                                .free = uint64_t{status.f_bavail} * status.f_frsize};
}

Result<std::string> FileManager::destinationOfSymbolicLinkAtPath(std::string_view path) {
    auto item = itemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    std::string target(PATH_MAX, '\0');
    const ssize_t length =
        ::readlinkat(item->parent()->descriptor(), item->name().c_str(), target.data(), target.size());
    if (length < 0) {
        return lastError();
    }
    target.resize(static_cast<size_t>(length));
    return target;
}

std::string FileManager::stringByResolvingSymlinksInPath(std::string_view path) {
    auto target = _root->follow(path);
    if (target) {
        const std::string folder = joinedNames(target->names);
        return target->leaf.empty() ? folder : joinPath(folder, target->leaf);
    }
    // A link that may not be followed is not followed here either.
    if (target.error().value() != ENOENT) {
        return std::string(path);
    }
    // A link to nothing leads to a name in a folder that may be there all the same.
    auto destination = destinationOfSymbolicLinkAtPath(path);
    if (!destination) {
        return std::string(path);
    }
    return destination->starts_with('/') ? *destination : joinPath(split(path).folder, *destination);
}

std::string FileManager::pathForTools(std::string_view path) {
    if (!_root->lacksLinks()) {
        return std::string(path);
    }
    // A tool does not follow a link that it is given, unless a "/" stands behind it.
    if (path.ends_with('/')) {
        return joinPath(stringByResolvingSymlinksInPath(path), "");
    }
    const auto [folder, name] = split(path);
    return name == "." || folder == "." ? std::string(path)
                                        : joinPath(stringByResolvingSymlinksInPath(folder), name);
}

Result<void> FileManager::removeItemAtPath(std::string_view path) {
    auto item = itemAtPath(path);
    if (!item) {
        return std::unexpected(item.error());
    }
    auto removed = item->remove();
    forgetLastFolder();
    return removed;
}

Result<void> FileManager::moveItemAtPath(std::string_view from, std::string_view to) {
    auto source = itemAtPath(from);
    if (!source) {
        return std::unexpected(source.error());
    }
    auto target = newItemAtPath(to);
    if (!target) {
        return std::unexpected(target.error());
    }
    auto moved = source->moveTo(*target);
    forgetLastFolder();
    return moved;
}

Result<void> FileManager::copyItemAtPath(std::string_view from, std::string_view to) {
    auto source = itemAtPath(from);
    if (!source) {
        return std::unexpected(source.error());
    }
    auto target = newItemAtPath(to);
    if (!target) {
        return std::unexpected(target.error());
    }
    return source->copyTo(*target);
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
