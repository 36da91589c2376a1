#include "Platform/Files/FileAttributes.h"

#include <dirent.h>

namespace platform {

FileType fileTypeOfMode(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileType::regular;
    case S_IFDIR:
        return FileType::directory;
    case S_IFLNK:
        return FileType::symbolicLink;
    case S_IFSOCK:
        return FileType::socket;
    case S_IFIFO:
        return FileType::fifo;
    case S_IFCHR:
        return FileType::characterDevice;
    case S_IFBLK:
        return FileType::blockDevice;
    default:
        return FileType::unknown;
    }
}

FileType fileTypeOfEntry(unsigned char type) {
    return type == DT_UNKNOWN ? FileType::unknown : fileTypeOfMode(static_cast<mode_t>(DTTOIF(type)));
}

FileAttributes FileAttributes::from(const struct stat& status) {
    return {.type = fileTypeOfMode(status.st_mode),
            .size = static_cast<uint64_t>(status.st_size),
            .permissions = status.st_mode & 07777,
            .owner = status.st_uid,
            .group = status.st_gid,
            .accessed = status.st_atim,
            .modified = status.st_mtim,
            .linkCount = status.st_nlink,
            .device = status.st_dev,
            .inode = status.st_ino};
}

} // namespace platform
