#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/Error.h"
#include "Platform/Files/FileAttributes.h"
#include "Platform/Files/Path.h"
#include "Platform/Files/TreeRemoval.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class DirectoryEnumerator;

/// What may be done with a device's tree. Where it may only be looked at, every change is refused as a
/// read-only file system refuses it (EROFS).
enum class Access { change, lookOnly };

/// A folder held by its descriptor. What is done by name inside of it stays inside of it, whatever becomes of
/// its path meanwhile.
class Folder {
  public:
    explicit Folder(Descriptor descriptor, Access access = Access::change)
        : _descriptor(std::move(descriptor))
        , _access(access) {}

    [[nodiscard]] int descriptor() const { return _descriptor.get(); }
    [[nodiscard]] Access access() const { return _access; }
    /// Names of the direct entries, without "." and "..", in the file system's order.
    [[nodiscard]] Result<std::vector<std::string>> entries() const;
    /// Walks all that is below the folder; null, with `errno` set, where it cannot be read.
    [[nodiscard]] std::unique_ptr<DirectoryEnumerator> enumerate() const;

  private:
    Descriptor _descriptor;
    Access _access;
};

/// One name in an opened folder: found once, then looked at and acted on in that very folder. A link at the
/// name is the item itself and is never followed. A name that would lead out of the folder ("..", one with
/// "/" or a byte 0) does not exist; "." can be looked at and not changed.
class Item {
  public:
    Item(std::shared_ptr<const Folder> parent, std::string_view name)
        : _parent(std::move(parent))
        , _name(name) {}

    [[nodiscard]] const std::shared_ptr<const Folder>& parent() const { return _parent; }
    [[nodiscard]] const std::string& name() const { return _name; }

    [[nodiscard]] Result<FileAttributes> attributes() const;
    /// An error where the folder may only be looked at: what stands at the name cannot be changed, and
    /// nothing put there.
    [[nodiscard]] Result<void> mayChange() const;
    /// Opens the item if it is a folder; a link to a folder is an error (ENOTDIR or ELOOP).
    [[nodiscard]] Result<std::shared_ptr<const Folder>> openFolder() const;
    /// Walks the item if it is a folder; null for anything else.
    [[nodiscard]] std::unique_ptr<DirectoryEnumerator> enumerate() const;
    /// Removes the item, a folder with all that is in it. Goes on past what cannot be removed and gives the
    /// first error; the handler, if any, is told what stays inside of a folder.
    [[nodiscard]] Result<void> remove(const RemovalFailureHandler& failed = {}) const;
    /// Gives the item another name in its folder, in one step. An existing item of that name is an error
    /// (EEXIST), and so is a folder that only a copy can move (EXDEV).
    [[nodiscard]] Result<void> rename(std::string_view newName) const;
    /// The same, by a copy where need be, and an existing item of that name is removed first, with all that
    /// is in it. Where that cannot be removed, the error tells why.
    [[nodiscard]] Result<void> renameReplacing(std::string_view newName) const;
    /// Moves the item, across file systems by copy and removal; owner, mode, times and extended attributes
    /// stay. An existing target is an error (EEXIST). A failed move leaves the item where it was; only where
    /// the removal after a copy fails, the whole copy is there beside what could not be removed. Even while a
    /// copy is made or removed, each of the two names stands for the whole item or for nothing.
    [[nodiscard]] Result<void> moveTo(const Item& target) const;
    /// Copies the item, a folder with all that is in it, with what `moveTo` keeps. A failed copy leaves
    /// nothing. Holes in files stay holes; names of one file become files of their own.
    [[nodiscard]] Result<void> copyTo(const Item& target) const;

  private:
    [[nodiscard]] Result<void> moveByCopyTo(const Item& target) const;
    [[nodiscard]] Result<void> removeBehindOtherName() const;

    std::shared_ptr<const Folder> _parent;
    std::string _name;
};

} // namespace platform
