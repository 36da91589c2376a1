#pragma once

#include <string>
#include <string_view>

/// URLs of images, as the image cache knows them; "OZIcon" ones are `iconURLWithPath` of
/// Categories/FileURLs.h.

/// The icon of an application of the device: "OZAppId://<identifier>/".
[[nodiscard]] inline std::string appIconURLWithIdentifier(std::string_view identifier) {
    return "OZAppId://" + std::string(identifier) + "/";
}

/// An image of the program's own resources, such as "FolderIcon".
[[nodiscard]] inline std::string namedImageURL(std::string_view name) {
    return "OZImage:///" + std::string(name);
}
