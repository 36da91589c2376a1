#pragma once

#include <filesystem>

namespace ozdevice {

/// Puts the stand-in program into a folder of tools under the path of each tool that it stands in for. It is
/// searched beside the running program, in "../libexec"; throws `std::runtime_error` if it is not there.
void installStandInTools(const std::filesystem::path& toolsFolder);

} // namespace ozdevice
