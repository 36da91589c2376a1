#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <dirent.h>

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

} // namespace platform
