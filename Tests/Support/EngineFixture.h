#pragma once

#include "Model/Core/OZCore.h"
#include "Tests/Support/TemporaryDevice.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// An engine with its log on a small device of some generation.
class EngineFixture {
  public:
    explicit EngineFixture(double foundationVersion = 1445.32)
        : device(platform::DeviceFacts{.foundationVersion = foundationVersion}),
          core(std::make_unique<OZCore>(device.device(), nullptr, nullptr)) {
        core->setCleanupLogger(std::make_unique<OZCleanupLogger>(device.device()));
    }

    /// Puts the engine into a mode by way of a run with every step off.
    void enter(OZCoreMode mode) {
        core->setTestMode(mode == OZCoreMode::test);
        const platform::Dictionary nothing;
        core->clean(&nothing, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
        core->cleanupLogger()->deleteLogFile();
    }
    /// Runs the given steps alone.
    void clean(const std::vector<std::string_view>& steps, OZCoreMode mode = OZCoreMode::clean) {
        platform::Dictionary settings;
        for (const auto step : steps) {
            settings[std::string(step)] = true;
        }
        core->setTestMode(mode == OZCoreMode::test);
        core->clean(&settings, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
    }
    [[nodiscard]] bool exists(std::string_view path) const {
        return std::filesystem::exists(std::filesystem::symlink_status(device.hostPath(path)));
    }
    [[nodiscard]] std::string log() const { return device.contents(OZCleanupLogger::logFilePath); }
    /// The paths that the log names, in their order.
    [[nodiscard]] std::vector<std::string> loggedPaths() const;

    TemporaryDevice device;
    std::unique_ptr<OZCore> core;
};

} // namespace tests
