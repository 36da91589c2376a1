#pragma once

#include "Platform/Formats/PropertyList.h"

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
    /// Nothing: what is stored says none of these.
    unknown = UINT64_MAX,
};

/// A file or folder of the user's own that a cleanup removes.
struct CustomFileRecord {
    static constexpr const char* directoryType = "NSFileTypeDirectory";
    static constexpr const char* regularType = "NSFileTypeRegular";

    /// None in a record that lacks it, which is not stored.
    std::optional<std::string> filePath{};
    /// Anything but the directory type counts as a file. None in a record that lacks it, which is not stored.
    std::optional<std::string> fileType{};
    // For folders only; the rest counts for a setting other than `whole`.
    OZCustomFolderSetting customFolderSetting = OZCustomFolderSetting::whole;
    bool recursive = false;
    /// Filters on names: what they begin with, contain and end in.
    std::optional<std::string> startPattern{};
    std::optional<std::string> middlePattern{};
    std::optional<std::string> endPattern{};
    /// What else is stored with the record: it stays with it.
    platform::Dictionary other{};

    bool operator==(const CustomFileRecord&) const = default;
};
