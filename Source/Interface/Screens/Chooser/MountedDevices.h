#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The mount points of this machine that look like the tree of a device, by the names at their top. `mounts`
/// is a text as /proc/self/mountinfo. Asks file systems, which may hang: not for the main thread.
[[nodiscard]] std::vector<std::string> mountedDevices(std::string_view mounts);
/// Those of this machine by now.
[[nodiscard]] std::vector<std::string> mountedDevices();
