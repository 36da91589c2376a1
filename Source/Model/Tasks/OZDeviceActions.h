#pragma once

#include "Model/Tasks/OZDeviceAction.h"

#include <functional>
#include <string_view>

namespace platform {
class Device;
}

/// Restarts the user interface or the device. Every operation blocks its caller for the length of the tools'
/// runs and of the waits between them; a tool that the device lacks is passed over silently.
class OZDeviceActions {
  public:
    /// `isInstalled` says whether an application with an identifier is on the device; `prepareToClose` stores
    /// what must not be lost, since the program may end with the interface.
    OZDeviceActions(platform::Device& device, std::function<bool(std::string_view identifier)> isInstalled,
                    std::function<void()> prepareToClose);

    /// Whether the device has any of the tools that restart the interface.
    [[nodiscard]] bool canRestart() const;

    /// Does the action; a value outside the enumeration does nothing.
    void performAction(OZDeviceAction action);

    void reboot();
    /// Rebuilds the home screen's cache of applications, as the user "mobile".
    void rebuildUICache();
    void rebuildUICacheAndRespring();
    /// Asks the interface to stop in the way that fits the platform's generation, then kills it in every
    /// case.
    void respring();

  private:
    void stopPolitely();

    platform::Device& _device;
    std::function<bool(std::string_view)> _isInstalled;
    std::function<void()> _prepareToClose;
};
