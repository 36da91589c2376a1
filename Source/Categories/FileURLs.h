#pragma once

#include <optional>
#include <string>
#include <string_view>

/// URLs that name a file of the device, as text. Paths are device paths and bytes.

/// A URL of the scheme "file" for a file itself.
[[nodiscard]] std::string fileURLWithPath(std::string_view path);
/// A URL of the scheme "OZIcon" for the small icon that an image file gives. None for a path that is not
/// absolute.
[[nodiscard]] std::optional<std::string> iconURLWithPath(std::string_view path);

/// The path of a URL, decoded; a text without a scheme is a path already. None for a URL without a path.
[[nodiscard]] std::optional<std::string> pathOfURL(std::string_view url);
