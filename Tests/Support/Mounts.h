#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tests {

/// Whether this process may have mounts of its own, which it has from the first call on.
bool hasOwnMounts();
/// Runs a block in a process with mounts of its own and gives what it tells; none where that is not allowed.
std::optional<std::string> inMountNamespace(const std::function<std::string()>& block);

// For such a block.
/// A file system in memory, of so many bytes.
void mountMemory(const std::filesystem::path& folder, uint64_t bytes);
void makeReadOnly(const std::filesystem::path& folder);
/// Takes off whatever those two have mounted.
void unmountAll();

} // namespace tests
