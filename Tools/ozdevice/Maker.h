#pragma once

#include "DeviceBuild.h"

#include <expected>
#include <string>

namespace ozdevice {

/// Makes a device folder in a directory that is missing or empty, with its tree, its facts and the stand-in
/// tools. The same options give the same tree, dates aside, which are counted back from now. The error is one
/// line for the user; a directory that held something is untouched then, any other is
/// as it was.
[[nodiscard]] std::expected<void, std::string> createDevice(const std::string& directory,
                                                            const DeviceOptions& options);

/// The facts of a device of this generation, as its folder keeps them.
platform::Dictionary deviceFacts(const Generation& generation, std::string_view model);

} // namespace ozdevice
