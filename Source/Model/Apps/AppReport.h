#pragma once

#include <string>

namespace platform {
class Device;
}

/// The installed applications of a device with all their containers, as lines for people; each ends in a
/// newline. What applications say of themselves shows no control character.
[[nodiscard]] std::string describeApplications(platform::Device& device);
