#pragma once

#include "Platform/Files/Descriptor.h"

#include <cstdint>
#include <cstring>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

/// One record of the kernel's directory listing, read in place from a buffer that `getdents64` filled.
struct DirectoryEntry {
    std::string_view name;
    unsigned char type;
    size_t recordLength;

    static DirectoryEntry at(const char* record) {
        const auto* entry = reinterpret_cast<const dirent64*>(record);
        return {std::string_view(entry->d_name), entry->d_type, entry->d_reclen};
    }
    [[nodiscard]] bool isSelfOrParent() const { return name == "." || name == ".."; }
};

/// Room for one reading of a folder, in bytes: large folders cost few calls, small ones little memory.
constexpr size_t directoryBufferSize = 32768;

/// Levels of a walk that keep their descriptors. Several walks go on at once, and processes may be allowed
/// few descriptors.
constexpr size_t openLevels = 32;

/// How a folder is opened to be read: never through a link.
constexpr int readFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Calls `visit` with every entry but "." and ".."; false when the folder cannot be read to its end
/// (`errno`).
template <class Visitor>
bool forEachEntry(int folder, Visitor visit) {
    alignas(dirent64) char buffer[directoryBufferSize];
    for (;;) {
        const ssize_t filled = ::getdents64(folder, buffer, sizeof buffer);
        if (filled <= 0) {
            return filled == 0;
        }
        for (size_t position = 0; position < static_cast<size_t>(filled);) {
            const auto entry = DirectoryEntry::at(buffer + position);
            position += entry.recordLength;
            if (!entry.isSelfOrParent()) {
                visit(entry);
            }
        }
    }
}

/// Which folder a descriptor stood for, so that it can be given up and found again.
struct FolderIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const FolderIdentity&) const = default;
    static FolderIdentity of(const struct stat& status) { return {status.st_dev, status.st_ino}; }

    /// The folder above `inner`, opened for reading; none when that is another one by now.
    [[nodiscard]] Descriptor openAbove(int inner) const {
        Descriptor parent(::openat(inner, "..", readFolderFlags));
        struct stat status = {};
        const bool same = parent && ::fstat(parent.get(), &status) == 0 && of(status) == *this;
        return same ? std::move(parent) : Descriptor();
    }
};

} // namespace platform
