#pragma once

#include "Launch/LauncherOptions.h"

#include <expected>
#include <memory>
#include <string>

namespace platform {
class Device;
}

/// Opens the device of a start. The error is one line that says what is wrong with it and what to do, its
/// version being unknown among that.
std::expected<std::unique_ptr<platform::Device>, std::string> openDevice(const std::string& folder,
                                                                         const LauncherOptions& options);
