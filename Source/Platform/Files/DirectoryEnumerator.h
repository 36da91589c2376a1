#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/DirectoryEntries.h"
#include "Platform/Files/FileAttributes.h"
#include "Platform/Files/Folder.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Walks a folder and all below it, each folder before its content, without following links. Folders that
/// cannot be read are given and not entered. Depth is limited by memory alone: only the innermost levels keep
/// their descriptors; the outer ones are found again through "..", and the walk ends early when one of them
/// is no longer where it was.
class DirectoryEnumerator {
  public:
    /// `folder` must be opened for reading. The access is that of the items.
    explicit DirectoryEnumerator(Descriptor folder, Access access = Access::change);

    /// The next entry's path relative to the folder, none at the end. Valid until the next call.
    std::optional<std::string_view> nextObject();
    /// The entry that `nextObject` gave last: its type, cheaply, and all its attributes.
    [[nodiscard]] FileType fileType() const { return _type; }
    [[nodiscard]] Result<FileAttributes> fileAttributes() const;
    /// How many folders, so far, could not be read to their end. Each belongs to the entry that `nextObject`
    /// gave last before it, or is above it.
    [[nodiscard]] size_t unreadFolders() const { return _unreadFolders; }
    /// The same entry as an item, which outlives the walk and keeps a descriptor of its folder open.
    [[nodiscard]] Item item() const {
        return {_levels.back().folder, std::string_view(_path).substr(_nameStart)};
    }
    /// Leaves out what is below the entry that `nextObject` gave last.
    void skipDescendants() { _descend = false; }

  private:
    struct Level {
        std::shared_ptr<const Folder> folder;
        std::vector<char> buffer;
        size_t position = 0;
        size_t filled = 0;
        size_t pathLength = 0;
        // Once the descriptor was given up: which folder it was, and what is left to give of it.
        bool readToEnd = false;
        FolderIdentity identity;
        std::vector<std::pair<std::string, unsigned char>> rest;
    };

    void enterLastEntry();
    bool readNextEntry(Level& level);
    bool fill(Level& level);
    void giveUpDescriptor(Level& level);
    void leaveLevel();

    Access _access;
    std::vector<Level> _levels;
    std::vector<char> _spareBuffer;
    std::string _path;
    size_t _nameStart = 0;
    size_t _unreadFolders = 0;
    FileType _type = FileType::unknown;
    bool _descend = false;
};

} // namespace platform
