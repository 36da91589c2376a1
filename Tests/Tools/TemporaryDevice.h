#pragma once

#include "Maker.h"

#include <filesystem>
#include <map>
#include <string>

namespace ozdevice::tests {

/// A folder that is gone at the end of the test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return _path; }

  private:
    std::filesystem::path _path;
};

/// A device folder of its own for one test.
class TemporaryDevice {
  public:
    explicit TemporaryDevice(const DeviceOptions& options = {.junkFileCount = 0});

    [[nodiscard]] std::filesystem::path path() const { return _folder.path() / "device"; }
    [[nodiscard]] std::filesystem::path root() const { return path() / "Root"; }

  private:
    TemporaryFolder _folder;
};

struct CommandResult {
    int status = -1;
    std::string output;
};

/// Runs a command line in the host's shell; the output holds both streams.
CommandResult shell(const std::string& commandLine);

std::string readFile(const std::filesystem::path& path);

/// Every entry below a folder with its kind and content, or where it leads.
std::map<std::string, std::string> contentsBelow(const std::filesystem::path& folder);

} // namespace ozdevice::tests
