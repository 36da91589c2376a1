#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

namespace platform {
class Device;
}

/// A daemon that is switched by moving its property list out of the folder that the service manager reads.
/// The list may stand in two places, that of the system's daemons and that of the others; the daemon is
/// enabled if it stands in either.
class OZFileDaemon : public OZTogglableItemList {
  public:
    /// Null if the device has no such daemon. Throws AssertionFailure without an identifier. The device
    /// outlives the daemon.
    static std::unique_ptr<OZFileDaemon> make(platform::Device& device, std::string_view identifier);

    [[nodiscard]] bool prefersEnabledState() const override { return true; }
    /// Makes the property lists root's own with mode 644, too, as the service manager wants them, whether
    /// they were moved or not.
    bool applyChanges() override;
    /// Where the service manager looks for the property lists, in the order of the items.
    [[nodiscard]] std::vector<std::string> enabledPaths();

  private:
    OZFileDaemon(platform::Device& device, std::string identifier);

    platform::Device& _device;
};
