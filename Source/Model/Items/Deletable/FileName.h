#pragma once

#include "Platform/Folder.h"

#include <string>
#include <string_view>

/// The last component of a path without its extension. A name that begins with its only dot has none.
inline std::string nameWithoutExtension(std::string_view path) {
    const auto name = platform::lastPathComponent(path);
    const auto dot = name.rfind('.');
    return std::string(dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot));
}
