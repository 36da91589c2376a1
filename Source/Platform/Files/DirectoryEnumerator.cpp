#include "Platform/Files/DirectoryEnumerator.h"

#include <algorithm>

#include <fcntl.h>

namespace platform {

DirectoryEnumerator::DirectoryEnumerator(Descriptor folder, Access access)
    : _access(access) {
    _levels.push_back({.folder = std::make_shared<const Folder>(std::move(folder), _access)});
}

std::optional<std::string_view> DirectoryEnumerator::nextObject() {
    if (_descend) {
        enterLastEntry();
    }
    while (!_levels.empty()) {
        Level& level = _levels.back();
        _path.resize(level.pathLength);
        if (readNextEntry(level)) {
            if (_type == FileType::unknown) {
                const auto attributes = fileAttributes();
                _type = attributes ? attributes->type : FileType::unknown;
            }
            _descend = _type == FileType::directory;
            return _path;
        }
        leaveLevel();
    }
    return std::nullopt;
}

Result<FileAttributes> DirectoryEnumerator::fileAttributes() const {
    if (_levels.empty()) {
        return failure(ENOENT);
    }
    struct stat status = {};
    if (::fstatat(_levels.back().folder->descriptor(), _path.c_str() + _nameStart, &status,
                  AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    return FileAttributes::from(status);
}

void DirectoryEnumerator::enterLastEntry() {
    _descend = false;
    Descriptor folder(
        ::openat(_levels.back().folder->descriptor(), _path.c_str() + _nameStart, readFolderFlags));
    if (!folder) {
        ++_unreadFolders;
        return;
    }
    Level level{.folder = std::make_shared<const Folder>(std::move(folder), _access),
                .buffer = std::move(_spareBuffer),
                .pathLength = _path.size()};
    _spareBuffer = {};
    _levels.push_back(std::move(level));
    if (_levels.size() > openLevels) {
        giveUpDescriptor(_levels[_levels.size() - 1 - openLevels]);
    }
}

bool DirectoryEnumerator::readNextEntry(Level& level) {
    const auto take = [&](std::string_view name, unsigned char type) {
        if (!_path.empty()) {
            _path += '/';
        }
        _nameStart = _path.size();
        _path += name;
        _type = fileTypeOfEntry(type);
        return true;
    };
    while (level.position < level.filled || fill(level)) {
        const auto entry = DirectoryEntry::at(level.buffer.data() + level.position);
        level.position += entry.recordLength;
        if (!entry.isSelfOrParent()) {
            return take(entry.name, entry.type);
        }
    }
    if (!level.rest.empty()) {
        const auto [name, type] = std::move(level.rest.back());
        level.rest.pop_back();
        return take(name, type);
    }
    return false;
}

bool DirectoryEnumerator::fill(Level& level) {
    if (level.readToEnd) {
        return false;
    }
    level.buffer.resize(directoryBufferSize);
    const ssize_t filled = ::getdents64(level.folder->descriptor(), level.buffer.data(), level.buffer.size());
    _unreadFolders += filled < 0 ? 1 : 0;
    level.position = 0;
    level.filled = filled > 0 ? static_cast<size_t>(filled) : 0;
    return filled > 0;
}

void DirectoryEnumerator::giveUpDescriptor(Level& level) {
    struct stat status = {};
    if (!level.folder || ::fstat(level.folder->descriptor(), &status) < 0) {
        return;
    }
    while (level.position < level.filled || fill(level)) {
        const auto entry = DirectoryEntry::at(level.buffer.data() + level.position);
        level.position += entry.recordLength;
        if (!entry.isSelfOrParent()) {
            level.rest.emplace_back(entry.name, entry.type);
        }
    }
    std::reverse(level.rest.begin(), level.rest.end());
    level.readToEnd = true;
    level.identity = FolderIdentity::of(status);
    level.buffer = {};
    level.position = level.filled = 0;
    level.folder.reset();
}

void DirectoryEnumerator::leaveLevel() {
    Level left = std::move(_levels.back());
    _levels.pop_back();
    _spareBuffer = std::move(left.buffer);
    if (_levels.empty() || _levels.back().folder) {
        return;
    }
    Level& outer = _levels.back();
    Descriptor found = outer.identity.openAbove(left.folder->descriptor());
    if (!found) {
        ++_unreadFolders;
        _levels.clear();
        return;
    }
    outer.folder = std::make_shared<const Folder>(std::move(found), _access);
}

} // namespace platform
