#pragma once

#include <string_view>

/// The name that a package has in the database, from one that may tell an architecture, too: "libfoo" from
/// "libfoo:arm64" or "libfoo:any". No name holds a colon.
inline std::string_view withoutArchitecture(std::string_view name) {
    return name.substr(0, name.find(':'));
}
