#pragma once

#include "Model/Core/OnlyFiles.h"

#include <limits>
#include <span>
#include <string_view>

/// Names' filters: an entry's last component is compared.
struct NamePatterns {
    std::span<const std::string_view> exactMatches{};
    std::span<const std::string_view> startPatterns{};
    std::span<const std::string_view> middlePatterns{};
    std::span<const std::string_view> endPatterns{};
};

/// The primitives that a table's row can call.
enum class CleanupPrimitive {
    del,
    delr,
    delFolderContents,
    delFilesInFolderRecursive,
    delFilesExcludingPatternsRecursive,
    /// With the first start, middle and end pattern, all of which a name must have.
    delWithPattern,
    delWithPatterns,
};

/// One call of a primitive: what a step touches, as a row of its table.
struct CleanupAction {
    CleanupPrimitive primitive;
    /// Absolute, or relative to the group's directory.
    std::string_view path;
    OnlyFiles onlyFiles = OnlyFiles::no;
    NamePatterns patterns{};
    /// The row counts on versions of the platform below this one.
    double belowFoundationVersion = std::numeric_limits<double>::infinity();
};

/// Rows that are worth a look only where their directory is there.
struct CleanupGroup {
    std::string_view directory;
    std::span<const CleanupAction> actions;
};
