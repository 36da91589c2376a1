#pragma once

#include "Platform/Files/DirectoryEnumerator.h"
#include "Platform/Files/Error.h"
#include "Platform/Files/FileAttributes.h"
#include "Platform/Files/FileHandle.h"
#include "Platform/Files/Folder.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class DeviceRoot;

/// How a path's folders are found: by the kernel in one call where it can, or a component at a time.
enum class PathResolution { kernel, componentWise };

enum class IntermediateFolders { refuse, create };

/// Whom a file belongs to and what its permission bits allow.
struct FileOwnership {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t permissions = 0644;
};

/// The only way to a device's tree. Paths are device paths: absolute ones start at the device root, relative
/// ones at its current directory; no path, link or ".." leads above the root. Paths are bytes; no encoding is
/// assumed.
///
/// Links inside a path are followed within the root. A link that belongs to an ordinary user is followed only
/// to a folder of the same user: with it, nobody can lead a run with more rights than their own to other
/// people's files.
///
/// Where the tree lacks the links "var", "etc" and "tmp" at its top, as archives of a device may, paths mean
/// what they would mean with them.
///
/// Handles are cheap to copy. All copies share the root and the current directory; one handle serves one
/// thread.
class FileManager {
  public:
    /// Opens a folder of the host as a device root.
    static Result<FileManager> atRoot(const std::string& hostFolder,
                                      PathResolution resolution = PathResolution::kernel);

    /// From now on every change through a handle on the root, and through what is found by one, is refused as
    /// on a read-only file system (EROFS). To be called before anything else is done with the tree; what was
    /// found before knows nothing of it.
    Result<void> lookOnly();
    /// Whether changes are not refused in this way; the file system may still refuse them.
    [[nodiscard]] bool mayChange() const;

    // The current directory.
    Result<void> changeCurrentDirectoryPath(std::string_view path);
    /// The device path of the current directory, free of links.
    [[nodiscard]] std::string currentDirectoryPath() const;
    /// Descriptors of the root and of the current directory; the root keeps them open.
    [[nodiscard]] int rootDescriptor() const;
    [[nodiscard]] int currentDirectoryDescriptor() const;

    // Finding: everything else stands on these.
    /// The item that a path names, which need not exist; its folder must. "/" at a path's end means nothing.
    /// Where a path ends in "." or "..", and for "/", the item is the folder seen from inside, which can be
    /// looked at and not removed.
    Result<Item> itemAtPath(std::string_view path);
    /// The item of a path relative to a folder, reached through no link; ".." is refused (EINVAL).
    Result<Item> itemBelow(const std::shared_ptr<const Folder>& folder, std::string_view relativePath);
    /// Opens a folder, following links.
    Result<std::shared_ptr<const Folder>> folderAtPath(std::string_view path);
    /// Makes all handles on the root find folders anew. To be called when a folder has been moved or removed
    /// through an item or by another program; this class's own operations on paths do it themselves.
    void forgetLastFolder();

    // Looking.
    /// Of the item itself; a link is not followed.
    [[nodiscard]] Result<FileAttributes> attributesOfItemAtPath(std::string_view path);
    /// Of what a path leads to; links are followed.
    [[nodiscard]] Result<FileAttributes> attributesOfTargetAtPath(std::string_view path);
    /// Follows links; a link to nothing does not exist.
    [[nodiscard]] bool fileExistsAtPath(std::string_view path, bool* isDirectory = nullptr);
    [[nodiscard]] bool isWritableFileAtPath(std::string_view path);
    /// Whether what a path leads to may be written, as the kernel sees it; the error says why not.
    [[nodiscard]] Result<void> checkWritableAtPath(std::string_view path) const;
    [[nodiscard]] bool isExecutableFileAtPath(std::string_view path);
    [[nodiscard]] Result<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path);
    /// Null when the path is no folder that can be read.
    [[nodiscard]] std::unique_ptr<DirectoryEnumerator> enumeratorAtPath(std::string_view path);
    [[nodiscard]] Result<FileSystemAttributes> attributesOfFileSystemForPath(std::string_view path);
    [[nodiscard]] Result<std::string> destinationOfSymbolicLinkAtPath(std::string_view path);
    /// The device path without links. What cannot be resolved stays as it stands.
    [[nodiscard]] std::string stringByResolvingSymlinksInPath(std::string_view path);
    /// The path at which a program that has the root as its "/" reaches the same item: the path itself, or,
    /// where the tree lacks a link at its top, one with no link before its last name.
    [[nodiscard]] std::string pathForTools(std::string_view path);

    // Reading and writing.
    static constexpr uint64_t defaultContentLimit = uint64_t{256} << 20U;
    /// The content of a regular file, links followed; more than `limit` bytes is an error (EFBIG).
    [[nodiscard]] Result<std::string> contentsAtPath(std::string_view path,
                                                     uint64_t limit = defaultContentLimit);
    /// Replaces a file's content in one step: temporary file, sync, rename. Keeps mode and owner of a file
    /// that is there; a reader sees the old content or the new.
    Result<void> writeContents(std::string_view path, std::string_view bytes);
    /// The same with a given owner, group and mode, which the file has before it gets its name.
    Result<void> writeContents(std::string_view path, std::string_view bytes, const FileOwnership& ownership);
    /// Opens an existing regular file of one name for writing; a link or a file of several names is an error.
    [[nodiscard]] Result<FileHandle> openForWriting(std::string_view path);
    [[nodiscard]] Result<FileHandle> openForReading(std::string_view path);
    /// A new empty file in place of whatever file or link stands there; other names of the old one keep their
    /// content.
    Result<FileHandle> createFileAtPath(std::string_view path, mode_t mode = 0644);

    // Changing.
    Result<void> removeItemAtPath(std::string_view path);
    Result<void> moveItemAtPath(std::string_view from, std::string_view to);
    Result<void> copyItemAtPath(std::string_view from, std::string_view to);
    Result<void> createDirectoryAtPath(std::string_view path, IntermediateFolders intermediate,
                                       mode_t mode = 0755);
    Result<void> createSymbolicLinkAtPath(std::string_view path, std::string_view destination);
    /// Of the item itself. None leaves owner or group as it is.
    Result<void> setOwnerOfItemAtPath(std::string_view path, std::optional<uid_t> owner,
                                      std::optional<gid_t> group);
    /// A link has no permissions of its own; asking for some is an error.
    Result<void> setPermissionsOfItemAtPath(std::string_view path, mode_t permissions);
    Result<void> setModificationDateOfItemAtPath(std::string_view path, timespec modified);

  private:
    explicit FileManager(std::shared_ptr<DeviceRoot> root);

    /// The item that a path names; an error where it may only be looked at.
    Result<Item> itemToChange(std::string_view path);
    /// The item at which something is to be made. Where a link is missing (see
    /// `DeviceRoot::targetOfMissingLink`), nothing may take its place (EEXIST): the data behind it would be
    /// out of sight.
    Result<Item> newItemAtPath(std::string_view path);
    Result<void> fromItemTo(std::string_view from, std::string_view to,
                            Result<void> (Item::*work)(const Item& target) const);
    Result<void> replaceContents(std::string_view path, std::string_view bytes,
                                 const std::optional<FileOwnership>& ownership);

    bool isLastFolder(const std::shared_ptr<const Folder>& base, std::string_view path) const;
    Result<std::shared_ptr<const Folder>> keepLastFolder(std::shared_ptr<const Folder> base,
                                                         std::string_view path, uint64_t generation,
                                                         Result<Descriptor> opened);
    Result<void> checkAccess(std::string_view path, int mode) const;

    std::shared_ptr<DeviceRoot> _root;
    // The folder that the last path was in: lists of siblings are the common case.
    std::shared_ptr<const Folder> _lastBase;
    std::string _lastPath;
    std::shared_ptr<const Folder> _lastFolder;
    uint64_t _lastGeneration = 0;
};

} // namespace platform
