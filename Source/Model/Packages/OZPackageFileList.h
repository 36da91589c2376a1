#pragma once

#include "Platform/Files/Error.h"

#include <string>
#include <string_view>
#include <vector>

/// How the text of a list file is stored.
enum class OZTextEncoding {
    utf8,
    /// With a byte-order mark in front.
    utf8WithMark,
    utf16LittleEndian,
    utf16BigEndian,
    utf32LittleEndian,
    utf32BigEndian,
    /// Some encoding of single bytes that nothing tells; the text is the bytes as they are.
    singleBytes,
};

/// The paths of a package's list file with the encoding that they were read in.
struct OZPackageFileList {
    std::vector<std::string> paths;
    OZTextEncoding encoding = OZTextEncoding::utf8;

    /// Reads the bytes of a list file, one path a line. A byte-order mark tells the encoding; without one it
    /// is UTF-8, or single bytes where it cannot be that. What stands behind the last newline is no path if
    /// it is blank; other blank lines stay. The error is for text that its mark does not fit.
    static platform::Result<OZPackageFileList> parse(std::string_view bytes);

    /// The bytes of a list file: the paths without newlines around them and without empty ones, each on a
    /// line that ends in a newline. Empty if no path is left. The error is for paths that the encoding
    /// cannot hold, and for a first path that would read as another encoding's mark.
    [[nodiscard]] platform::Result<std::string> serialize() const;
};
