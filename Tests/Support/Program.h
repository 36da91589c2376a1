#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tests {

/// How a program ended and what it wrote.
struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;
    /// Peak resident memory, in bytes.
    uint64_t peakMemory = 0;
};

/// Runs one of the built programs by its name, with standard input empty. `environment` holds "NAME=value" in
/// place of the caller's device.
Outcome runProgram(const std::string& name, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& environment = {});
/// Runs a command line in the host's shell; the output holds both streams.
Outcome shell(const std::string& commandLine);

} // namespace tests
