#pragma once

#include <cstdint>

#include <sys/stat.h>
#include <sys/types.h>

namespace platform {

enum class FileType { regular, directory, symbolicLink, socket, fifo, characterDevice, blockDevice, unknown };

/// What a directory entry says of itself; a link speaks for itself, never for its target.
struct FileAttributes {
    FileType type = FileType::unknown;
    /// Bytes, as the entry itself reports them.
    uint64_t size = 0;
    mode_t permissions = 0;
    uid_t owner = 0;
    gid_t group = 0;
    timespec accessed{};
    timespec modified{};
    uint64_t linkCount = 0;
    dev_t device = 0;
    ino_t inode = 0;

    static FileAttributes from(const struct stat& status);
};

/// Sizes of the file system that holds an item, in bytes.
struct FileSystemAttributes {
    uint64_t size = 0;
    uint64_t free = 0;
};

FileType fileTypeOfMode(mode_t mode);
/// From a directory entry's type byte; unknown where the file system does not tell.
FileType fileTypeOfEntry(unsigned char type);

} // namespace platform
