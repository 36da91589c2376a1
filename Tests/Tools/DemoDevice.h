#pragma once

#include "Maker.h"
#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace ozdevice::tests {

using ::tests::TemporaryFolder;

/// A device folder of its own for one test.
class DemoDevice {
  public:
    explicit DemoDevice(const DeviceOptions& options = {.junkFileCount = 0}) {
        if (const auto made = createDevice(path(), options); !made) {
            throw std::runtime_error(made.error());
        }
    }

    [[nodiscard]] std::filesystem::path path() const { return _folder.path("device"); }
    [[nodiscard]] std::filesystem::path root() const { return path() / "Root"; }
    [[nodiscard]] std::vector<std::string> listing() const { return _folder.listing(); }

  private:
    TemporaryFolder _folder{::tests::memoryFolder()};
};

} // namespace ozdevice::tests
