#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// What goes of a folder that the user has named.
enum class OZCustomFolderSetting : uint64_t {
    /// The folder itself with all it holds.
    whole = 0,
    /// What is inside of it.
    filesAndSubfolders = 1,
    /// Only files inside of it.
    onlyFiles = 2,
};

/// A file or folder of the user's own that a cleanup removes.
struct CustomFileRecord {
    static constexpr const char* directoryType = "NSFileTypeDirectory";
    static constexpr const char* regularType = "NSFileTypeRegular";

    std::string filePath;
    /// Anything but the directory type counts as a file.
    std::string fileType;
    // For folders only; the rest counts for a setting other than `whole`.
    OZCustomFolderSetting customFolderSetting = OZCustomFolderSetting::whole;
    bool recursive = false;
    /// Filters on names: what they begin with, contain and end in.
    std::optional<std::string> startPattern{};
    std::optional<std::string> middlePattern{};
    std::optional<std::string> endPattern{};

    bool operator==(const CustomFileRecord&) const = default;
};
