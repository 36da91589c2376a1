#pragma once

#include "Controller/CommandLine/ExitStatus.h"
#include "Launch/LauncherOptions.h"

#include <optional>
#include <string>

namespace platform {
class Device;
}

/// Why a switch does not begin.
struct Refusal {
    /// One line without its end: what is wrong, and what to do.
    std::string message;
    /// The process's exit status.
    int status = exitstatus::failure;
    /// The stored choices are what is in the way; --reset-settings puts them aside.
    bool settingsAreDamaged = false;
};

/// What has to hold before a switch touches a device. The first thing that does not hold is told; nothing has
/// been touched then.
std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options);

/// Why next to nothing on the device could be changed; none where it can be.
std::optional<Refusal> treeThatCannotBeWritten(platform::Device& device, const LauncherOptions& options);

/// Tells on the device's warnings what makes a switch doubtful that goes on all the same.
void warnBeforeRun(platform::Device& device, const LauncherOptions& options);
