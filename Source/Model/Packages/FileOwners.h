#pragma once

#include <string_view>
#include <vector>

/// One answer of the package database to the question whose a file is. Valid as long as the answer's text.
struct FileOwners {
    std::string_view path;
    /// In the tool's order and without architectures; they need not be known packages.
    std::vector<std::string_view> identifiers;
};

/// Reads the tool's answer, "package, package:architecture: path" a line; other lines, and those that are not
/// UTF-8, are passed over.
[[nodiscard]] std::vector<FileOwners> parseFileOwners(std::string_view answer);
