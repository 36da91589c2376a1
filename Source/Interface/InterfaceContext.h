#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace platform {
class Device;
}
class Host;
class Navigator;
class OZAlertController;
enum class OZDeviceAction : int;
class OZLocalizationManager;

/// What all screens stand on. It outlives them.
struct InterfaceContext {
    platform::Device& device;
    OZLocalizationManager& languages;
    Host& host;
    Navigator& navigator;
    /// "CFBundleDisplayName" and "CFBundleShortVersionString" of the program.
    std::string displayName;
    std::string shortVersion;
    /// Why nothing may be changed on the device, as a sentence for the user; none where it may.
    std::optional<std::string> lookOnlyReason;
    /// Restarts the interface or the device, without making its caller wait.
    std::function<void(OZDeviceAction action)> performDeviceAction;

    /// The dialogs that are shown; nobody else has to hold them.
    std::set<std::shared_ptr<OZAlertController>> alertControllers;

    /// A text in the user's language.
    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] double foundationVersion() const;
};
