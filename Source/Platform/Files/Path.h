#pragma once

#include <string>
#include <string_view>

namespace platform {

// What a path says, without a look at any tree. Paths are bytes.

/// The folder's text as it stands before an entry's name: with exactly one "/" at its end; empty
/// for the empty one.
std::string pathPrefix(std::string_view folder);
/// Folder and name joined by one "/".
std::string joinPath(std::string_view folder, std::string_view name);

/// The last component, without "/" at its end; the whole text where there is no other "/".
std::string_view lastPathComponent(std::string_view path);
/// What stands before the last component, without "/" at its end; "/" for what lies in it, and empty where
/// there is no "/".
std::string_view deletingLastPathComponent(std::string_view path);

/// What stands behind the last dot of a path's last name. Empty without a dot, and for a dot at the name's
/// beginning or end.
std::string_view pathExtension(std::string_view path);
/// The path without its extension and the dot before it.
std::string_view withoutPathExtension(std::string_view path);
/// The last name of a path without its extension.
std::string_view nameWithoutExtension(std::string_view path);

/// Whether a text names an item of a folder, and cannot lead out of it. To be asked of names that others
/// have made, such as an application's identifier: one that is a path would lead a deletion elsewhere.
[[nodiscard]] bool isFileName(std::string_view text);

} // namespace platform
