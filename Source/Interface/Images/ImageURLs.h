#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// URLs of images, as the image cache knows them; "OZIcon" ones are `iconURLWithPath` of
/// Categories/FileURLs.h.

inline constexpr std::string_view appIconScheme = "OZAppId";
inline constexpr std::string_view iconScheme = "OZIcon";
inline constexpr std::string_view fileScheme = "file";
inline constexpr std::string_view namedImageScheme = "OZImage";

/// The icon of an application of the device: "OZAppId://<identifier>/".
[[nodiscard]] inline std::string appIconURLWithIdentifier(std::string_view identifier) {
    return "OZAppId://" + std::string(identifier) + "/";
}

/// An image of the program's own resources, such as "FolderIcon".
[[nodiscard]] inline std::string namedImageURL(std::string_view name) {
    return "OZImage:///" + std::string(name);
}

/// What stands before "://"; empty where that is not there.
[[nodiscard]] inline std::string_view schemeOfURL(std::string_view url) {
    const size_t end = url.find("://");
    return url.substr(0, end == std::string_view::npos ? 0 : end);
}

/// What stands between "://" and the next "/", as it stands; empty where there is none.
[[nodiscard]] inline std::string_view hostOfURL(std::string_view url) {
    const size_t mark = url.find("://");
    const auto rest = url.substr(mark == std::string_view::npos ? url.size() : mark + 3);
    return rest.substr(0, rest.find('/'));
}
