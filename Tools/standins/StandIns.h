#pragma once

#include <string>
#include <vector>

// Programs that stand in for the device's own: they keep what a script could see of a device and note down
// what they were asked to do. They touch nothing but the device folder and execute nothing but what lies in
// its "Tools" folder.
namespace standins {

/// Runs the tool that the first argument names, on a device folder; gives its exit status.
int run(const std::string& deviceFolder, const std::vector<std::string>& arguments);

} // namespace standins
