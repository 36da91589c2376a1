#pragma once

#include <string>

namespace tests {

/// Stands in for standard output during its life.
class StandardOutput {
  public:
    explicit StandardOutput(const std::string& path);
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput();

  private:
    int _saved;
};

} // namespace tests
