#pragma once

#include <string>
#include <vector>

namespace ozdevice {

/// Runs the program with its arguments, without its name; gives the exit status: 1 for a failure, 2 for wrong
/// usage.
int runCommandLine(const std::vector<std::string>& arguments);

} // namespace ozdevice
