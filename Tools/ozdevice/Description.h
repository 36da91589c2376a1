#pragma once

#include <expected>
#include <string>
#include <utility>
#include <vector>

namespace ozdevice {

using Description = std::vector<std::pair<std::string, std::string>>;

/// Facts and counts of a device folder or a plain tree, as keys and values in a fixed order. The error is one
/// line for the user.
[[nodiscard]] std::expected<Description, std::string> describeDevice(const std::string& directory);

} // namespace ozdevice
