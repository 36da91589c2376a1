#pragma once

#include <string>

namespace tests {

/// How a command line ended and what it wrote.
struct Outcome {
    int status = -1;
    std::string output;
};

/// Runs a command line in the host's shell, with standard input empty; the output holds both streams.
Outcome shell(const std::string& commandLine);

} // namespace tests
