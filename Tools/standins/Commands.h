#pragma once

#include "DeviceFiles.h"

#include <span>
#include <string>

// One function a tool; arguments without the tool's name, the result is the exit status.
namespace standins {

using Arguments = std::span<const std::string>;

/// Takes names out of the process table on signals that end a process; 1 if no name was in it.
int killall(const ozdevice::DeviceFiles& device, Arguments arguments);

/// Keeps the overrides and the running services.
int launchctl(const ozdevice::DeviceFiles& device, Arguments arguments);

/// Runs a tool of the device; whom it runs as makes no difference here.
int su(const ozdevice::DeviceFiles& device, Arguments arguments);

} // namespace standins
