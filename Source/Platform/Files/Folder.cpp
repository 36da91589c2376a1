#include "Platform/Files/Folder.h"

#include "Platform/Files/DirectoryEntries.h"
#include "Platform/Files/DirectoryEnumerator.h"
#include "Platform/Files/TemporaryName.h"
#include "Platform/Files/TreeCopy.h"

#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

// The name for the system; where it would lead out of the folder, a text that names nothing.
const char* nameInside(const std::string& name) {
    const bool leadsOut = name == ".." || name.contains('/') || name.contains('\0');
    return leadsOut ? "" : name.c_str();
}

// Waits until the file system that holds a folder has everything on its disk, and learns of writes that
// failed.
Result<void> settle(const Folder& folder) {
    const Descriptor readable(::openat(folder.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable || ::syncfs(readable.get()) < 0) {
        return lastError();
    }
    return {};
}

Result<void> renameWithoutReplacing(int fromParent, const char* from, int toParent, const char* to) {
    if (::renameat2(fromParent, from, toParent, to, RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return lastError();
    }
    // A file system without the flag: the look and the rename are two steps there.
    struct stat status = {};
    if (::fstatat(toParent, to, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return failure(EEXIST);
    }
    if (errno != ENOENT) {
        return lastError();
    }
    if (::renameat(fromParent, from, toParent, to) < 0) {
        return lastError();
    }
    return {};
}

Result<void> renameInFolder(const Folder& folder, const std::string& from, const std::string& to) {
    return renameWithoutReplacing(folder.descriptor(), nameInside(from), folder.descriptor(), nameInside(to));
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

std::unique_ptr<DirectoryEnumerator> Folder::enumerate() const {
    Descriptor readable(::openat(descriptor(), ".", readFolderFlags));
    return readable ? std::make_unique<DirectoryEnumerator>(std::move(readable), _access) : nullptr;
}

Result<FileAttributes> Item::attributes() const {
    struct stat status = {};
    if (::fstatat(_parent->descriptor(), nameInside(_name), &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    return FileAttributes::from(status);
}

Result<std::shared_ptr<const Folder>> Item::openFolder() const {
    Descriptor folder(
        ::openat(_parent->descriptor(), nameInside(_name), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return lastError();
    }
    return std::make_shared<const Folder>(std::move(folder), _parent->access());
}

std::unique_ptr<DirectoryEnumerator> Item::enumerate() const {
    Descriptor folder(::openat(_parent->descriptor(), nameInside(_name), readFolderFlags));
    return folder ? std::make_unique<DirectoryEnumerator>(std::move(folder), _parent->access()) : nullptr;
}

Result<void> Item::mayChange() const {
    return _parent->access() == Access::change ? Result<void>() : failure(EROFS);
}

Result<void> Item::remove(const RemovalFailureHandler& failed) const {
    if (auto may = mayChange(); !may) {
        return may;
    }
    return removeTree(_parent->descriptor(), nameInside(_name), failed);
}

Result<void> Item::rename(std::string_view newName) const {
    if (auto may = mayChange(); !may) {
        return may;
    }
    return renameInFolder(*_parent, _name, std::string(newName));
}

Result<void> Item::renameReplacing(std::string_view newName) const {
    const Item target(_parent, newName);
    auto renamed = moveTo(target);
    if (renamed || renamed.error().value() != EEXIST) {
        return renamed;
    }
    // Nothing gives way to an item that has gone meanwhile.
    if (const auto own = attributes(); !own) {
        return std::unexpected(own.error());
    }
    const auto removed = target.remove();
    renamed = moveTo(target);
    const bool isInTheWay = !renamed && renamed.error().value() == EEXIST;
    return isInTheWay && !removed ? removed : renamed;
}

Result<void> Item::moveTo(const Item& target) const {
    for (const Item* end : {this, &target}) {
        if (auto may = end->mayChange(); !may) {
            return may;
        }
    }
    auto renamed = renameWithoutReplacing(_parent->descriptor(), nameInside(_name),
                                          target._parent->descriptor(), nameInside(target._name));
    return renamed || renamed.error().value() != EXDEV ? renamed : moveByCopyTo(target);
}

Result<void> Item::moveByCopyTo(const Item& target) const {
    if (target.attributes()) {
        return failure(EEXIST);
    }
    const Item copy(target._parent, temporaryNameFor(target._name));
    if (auto copied = copyTo(copy); !copied) {
        return copied;
    }
    auto settled = settle(*target._parent);
    if (settled) {
        settled = renameInFolder(*target._parent, copy._name, target._name);
    }
    if (!settled) {
        std::ignore = copy.remove();
        return settled;
    }
    return removeBehindOtherName();
}

Result<void> Item::removeBehindOtherName() const {
    const Item leaving(_parent, temporaryNameFor(_name));
    // Some layered file systems cannot rename a folder at all.
    if (!renameInFolder(*_parent, _name, leaving._name)) {
        return remove();
    }
    auto removed = leaving.remove();
    if (!removed) {
        std::ignore = renameInFolder(*_parent, leaving._name, _name);
    }
    return removed;
}

Result<void> Item::copyTo(const Item& target) const {
    if (auto may = target.mayChange(); !may) {
        return may;
    }
    return copyTree(_parent->descriptor(), nameInside(_name), target._parent->descriptor(),
                    nameInside(target._name));
}

} // namespace platform
