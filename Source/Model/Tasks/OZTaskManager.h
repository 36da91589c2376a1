#pragma once

#include <string>
#include <vector>

namespace platform {
class Device;
}

/// Signals processes by name, through the device's "killall" alone.
class OZTaskManager {
  public:
    static constexpr long killSignal = 9;

    OZTaskManager() = delete;

    /// The exit status of "killall"; 1 if the tool is missing, does not run or there is no name.
    static long killTaskWithName(platform::Device& device, const std::string& name, long signal = killSignal);
    static long killTasksWithNames(platform::Device& device, const std::vector<std::string>& names,
                                   long signal = killSignal);
};
