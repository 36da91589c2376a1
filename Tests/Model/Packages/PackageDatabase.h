#pragma once

#include "Tests/Support/TemporaryDevice.h"

#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// A device with a package database of the real tools.
class PackageDatabase {
  public:
    PackageDatabase();

    /// Builds a package of empty files and installs it. The fields, a line each, stand beside those that
    /// every package must have.
    void install(const std::string& name, std::string_view fields,
                 const std::vector<std::string>& files = {}) const;
    /// Runs a command of the host in the device folder, and expects it to succeed.
    void host(const std::string& command) const;
    /// Puts a program in the place of a package tool, which writes this answer and ends with a status.
    void answer(std::string_view tool, std::string_view text, int status = 0);

    TemporaryDevice device;
};

} // namespace tests
