#pragma once

#include "Platform/Files/Folder.h"

#include <string_view>

namespace platform {

/// What stands behind the last dot of a path's last name. Empty without a dot, and for a dot at the name's
/// beginning or end.
constexpr std::string_view pathExtension(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

/// The path without its extension and the dot before it.
constexpr std::string_view withoutPathExtension(std::string_view path) {
    const size_t length = pathExtension(path).size();
    return length == 0 ? path : path.substr(0, path.size() - length - 1);
}

/// The last name of a path without its extension.
inline std::string_view nameWithoutExtension(std::string_view path) {
    return withoutPathExtension(lastPathComponent(path));
}

} // namespace platform
