#include "Tests/Support/StandardOutput.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace tests {

StandardOutput::StandardOutput(const std::string& path) {
    std::fflush(stdout);
    _saved = ::dup(STDOUT_FILENO);
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_CLOEXEC, 0600);
    ::dup2(file, STDOUT_FILENO);
    ::close(file);
}

StandardOutput::~StandardOutput() {
    std::fflush(stdout);
    ::dup2(_saved, STDOUT_FILENO);
    ::close(_saved);
}

} // namespace tests
