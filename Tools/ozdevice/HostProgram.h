#pragma once

#include <string>
#include <vector>

namespace ozdevice {

/// Runs a program of the host by name and waits for it. Its output is passed on only if it fails, as part of
/// the `std::runtime_error` that is thrown then. Temporary files go to `temporaryDirectory`.
void runHostProgram(const std::vector<std::string>& commandLine, const std::string& temporaryDirectory);

} // namespace ozdevice
