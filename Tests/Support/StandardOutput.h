#pragma once

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace tests {

/// A file that stands in for standard output during its life.
class StandardOutput {
  public:
    explicit StandardOutput(const std::string& path) {
        std::fflush(stdout);
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_CLOEXEC, 0600);
        ::dup2(file, STDOUT_FILENO);
        ::close(file);
    }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() {
        std::fflush(stdout);
        ::dup2(_saved, STDOUT_FILENO);
        ::close(_saved);
    }

  private:
    int _saved = ::dup(STDOUT_FILENO);
};

} // namespace tests
