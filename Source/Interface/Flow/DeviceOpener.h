#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class MainQueue;
}
class OZModelBuilder;

/// A device that a window shows, with the model on it.
class OpenDevice {
  public:
    virtual ~OpenDevice() = default;

    [[nodiscard]] virtual OZModelBuilder& modelBuilder() = 0;
    /// Why the device may only be looked at, as a sentence that says what to do; none where it can be
    /// changed.
    [[nodiscard]] virtual const std::optional<std::string>& lookOnlyReason() const = 0;
    /// What a person has to hear of the opening, a sentence each.
    [[nodiscard]] virtual const std::vector<std::string>& warnings() const = 0;
};

/// Why a folder is not opened.
struct OpeningFailure {
    /// One line: what is wrong, and what to do.
    std::string message;
    /// The stored choices alone are in the way; they can be put aside.
    bool settingsAreDamaged = false;
};

/// How the window comes to devices; the program's start knows.
class DeviceOpener {
  public:
    using Outcome = std::expected<std::unique_ptr<OpenDevice>, OpeningFailure>;

    virtual ~DeviceOpener() = default;

    /// The folder that the start was given; none where a person is to choose.
    [[nodiscard]] virtual const std::optional<std::string>& namedFolder() const = 0;
    /// Opens a device and builds what its screens read at once, so that no screen waits for a file system.
    /// Any thread may call, one at a time; what comes back is used by the main thread, whose queue outlives
    /// it. With `resetSettings` damaged choices are kept under another name, and the defaults serve.
    virtual Outcome open(const std::string& folder, platform::MainQueue& mainQueue, bool resetSettings) = 0;
    /// Makes a device to play with and gives its folder. Takes a second or two.
    virtual std::expected<std::string, std::string> makeDemoDevice() = 0;
};
