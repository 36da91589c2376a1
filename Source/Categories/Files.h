#pragma once

#include "Platform/Files/FileManager.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// Additions to the file manager. How the storage is divided is `platform::Volumes`.

enum class TraverseLinks : bool { no, yes };

/// Bytes of an item, or of all that is below a folder, without the folder's own entry; a link counts for
/// itself. What cannot be read counts nothing.
[[nodiscard]] uint64_t sizeOfItemAtPath(platform::FileManager& fileManager, std::string_view path);

/// Without traversing, a link is there whatever it leads to, and is never a folder. `isDirectory` may be
/// null.
[[nodiscard]] bool fileExistsAtPath(platform::FileManager& fileManager, std::optional<std::string_view> path,
                                    bool* isDirectory, TraverseLinks traverseLinks);

/// Removes an item; when traversing, what a link leads to goes first, and the link stays if that cannot be
/// removed. The error is that of the last step that failed.
platform::Result<void> removeItemAtPath(platform::FileManager& fileManager, std::string_view path,
                                        TraverseLinks traverseLinks);

/// Owner and group by the account names of the device ("mobile", "root", "wheel" and what its own tables
/// name); none leaves it as it is. An unknown name is an error (EINVAL), and nothing is changed then.
platform::Result<void> setOwnerOfItemAtPath(platform::FileManager& fileManager, std::string_view path,
                                            std::optional<std::string_view> owner,
                                            std::optional<std::string_view> group);
