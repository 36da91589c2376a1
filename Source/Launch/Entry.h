#pragma once

#include <string>
#include <vector>

/// The whole program behind `main`: takes the launcher's options, opens the device, makes sure of the version
/// and of root, then obeys the switch. Gives the process's exit status.
int runProgram(const std::vector<std::string>& arguments);
