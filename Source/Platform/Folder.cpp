#include "Platform/Folder.h"

#include "Platform/DirectoryEntries.h"
#include "Platform/DirectoryEnumerator.h"
#include "Platform/TreeCopy.h"
#include "Platform/TreeRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

Result<void> renameWithoutReplacing(int fromParent, const char* from, int toParent, const char* to) {
    if (::renameat2(fromParent, from, toParent, to, RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return lastError();
    }
    // A file system without the flag: the look and the rename are two steps there.
    struct stat status{};
    if (::fstatat(toParent, to, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return failure(EEXIST);
    }
    if (::renameat(fromParent, from, toParent, to) < 0) {
        return lastError();
    }
    return {};
}

} // namespace

Result<std::vector<std::string>> Folder::entries() const {
    const Descriptor readable(::openat(descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<std::string> names;
    if (!readable ||
        !forEachEntry(readable.get(), [&](const DirectoryEntry& entry) { names.emplace_back(entry.name); })) {
        return lastError();
    }
    return names;
}

Result<FileAttributes> Item::attributes() const {
    struct stat status{};
    if (::fstatat(_parent->descriptor(), std::string(_name).c_str(), &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    return FileAttributes::from(status);
}

Result<std::shared_ptr<const Folder>> Item::openFolder() const {
    Descriptor folder(::openat(_parent->descriptor(), std::string(_name).c_str(),
                               O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return lastError();
    }
    return std::make_shared<const Folder>(std::move(folder));
}

std::unique_ptr<DirectoryEnumerator> Item::enumerate() const {
    Descriptor folder(::openat(_parent->descriptor(), std::string(_name).c_str(),
                               O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder ? std::make_unique<DirectoryEnumerator>(std::move(folder)) : nullptr;
}

Result<void> Item::remove() const {
    return removeTree(_parent->descriptor(), std::string(_name).c_str());
}

Result<void> Item::rename(std::string_view newName) const {
    return renameWithoutReplacing(_parent->descriptor(), std::string(_name).c_str(), _parent->descriptor(),
                                  std::string(newName).c_str());
}

Result<void> Item::moveTo(const Item& target) const {
    auto renamed = renameWithoutReplacing(_parent->descriptor(), std::string(_name).c_str(),
                                          target._parent->descriptor(), std::string(target._name).c_str());
    if (renamed || renamed.error().value() != EXDEV) {
        return renamed;
    }
    if (auto copied = copyTo(target); !copied) {
        return copied;
    }
    return remove();
}

Result<void> Item::copyTo(const Item& target) const {
    auto copied = copyTree(_parent->descriptor(), std::string(_name).c_str(), target._parent->descriptor(),
                           std::string(target._name).c_str());
    if (!copied && copied.error().value() != EEXIST) {
        // What was begun is worth nothing, and whether it can be removed changes nothing about the error.
        std::ignore = target.remove();
    }
    return copied;
}

std::string pathPrefix(std::string_view folder) {
    std::string prefix(folder);
    if (!prefix.empty() && !prefix.ends_with('/')) {
        prefix += '/';
    }
    return prefix;
}

std::string joinPath(std::string_view folder, std::string_view name) {
    return pathPrefix(folder).append(name);
}

std::string_view lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

} // namespace platform
