#pragma once

#include "Interface/Flow/DeviceOpener.h"
#include "Launch/LauncherOptions.h"

/// How a start without a switch comes to a window and its devices.
class WindowStart : public DeviceOpener {
  public:
    /// The options outlive it.
    explicit WindowStart(const LauncherOptions& options)
        : _options(options) {}

    /// Loads the window's library and runs it until the window is closed; gives the status of the process.
    /// Where there is no window the line on standard error says which package it needs, or that there is no
    /// display.
    int run();

    [[nodiscard]] const std::optional<std::string>& namedFolder() const override { return _options.device; }
    Outcome open(const std::string& folder, platform::MainQueue& mainQueue, bool resetSettings) override;
    std::expected<std::string, std::string> makeDemoDevice() override;

  private:
    const LauncherOptions& _options;
};
