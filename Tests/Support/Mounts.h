#pragma once

#include <cstdint>
#include <filesystem>

namespace tests {

/// Whether this process may have mounts of its own, which it has from the first call on.
bool hasOwnMounts();

// For such a process.
/// A file system in memory, of so many bytes.
void mountMemory(const std::filesystem::path& folder, uint64_t bytes);
void makeReadOnly(const std::filesystem::path& folder);
/// Takes off whatever those two have mounted.
void unmountAll();

} // namespace tests
