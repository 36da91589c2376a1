#pragma once

#include "Model/Items/Togglable/OZTogglableItem.h"

#include <memory>
#include <string_view>

namespace platform {
class Device;
}

/// A launch daemon, however the platform's generation switches daemons: by moving their property lists, or by
/// overrides in the service manager's own database.
class OZDaemon : public OZTogglableItem {
  public:
    /// Whether daemons are switched by overrides. A change needs a reboot where they are not.
    [[nodiscard]] static bool usesLaunchCtl(const platform::Device& device);

    /// Null if the device has no such daemon. Throws AssertionFailure without an identifier. The device
    /// outlives the daemon.
    static std::shared_ptr<OZDaemon> make(platform::Device& device, std::string_view identifier);

    /// The title is the identifier without the vendor's prefix, if something is left then.
    void updateTitleFromIdentifier(std::string_view identifier);
    /// What switches the daemon.
    [[nodiscard]] OZTogglableItem& implementor() const { return *_implementor; }

    [[nodiscard]] std::string identifier() const override { return _implementor->identifier(); }
    [[nodiscard]] std::string title() const override { return _title; }
    void setTitle(std::string title) override { _title = std::move(title); }

    bool applyChanges() override { return _implementor->applyChanges(); }
    bool discardChanges() override { return _implementor->discardChanges(); }
    [[nodiscard]] bool currentEnabledState() override { return _implementor->currentEnabledState(); }
    [[nodiscard]] bool enabledState() override { return _implementor->enabledState(); }
    void setEnabledState(bool enabled) override { _implementor->setEnabledState(enabled); }

  private:
    explicit OZDaemon(std::unique_ptr<OZTogglableItem> implementor);

    std::unique_ptr<OZTogglableItem> _implementor;
    std::string _title;
};
