#pragma once

#include "Categories/KeyValueText.h"
#include "Model/Items/Togglable/Daemons/OZFileDaemon.h"

/// A daemon that is switched by an override in the service manager's database, which outlives reboots. The
/// database is asked through "launchctl" at every question; nothing is kept.
class OZOverrideDaemon : public OZTogglableItem {
  public:
    /// Null if the device has no such daemon. Throws AssertionFailure without an identifier. The device
    /// outlives the daemon.
    static std::unique_ptr<OZOverrideDaemon> make(platform::Device& device, std::string_view identifier);

    [[nodiscard]] std::string identifier() const override { return _identifier; }
    /// It has no title of its own.
    [[nodiscard]] std::string title() const override { return {}; }
    void setTitle(std::string /*title*/) override {}

    /// Brings back property lists that were moved away under an older system, and then sets the override.
    /// True if the tool was asked to change something.
    bool applyChanges() override;
    bool discardChanges() override;
    /// A daemon without an override is enabled.
    [[nodiscard]] bool currentEnabledState() override { return isEnabledInDatabase(); }
    [[nodiscard]] bool enabledState() override { return _enabledState; }
    void setEnabledState(bool enabled) override { _enabledState = enabled; }

    /// What the database says of each daemon that it knows: "true" if it is disabled. Empty if nobody can
    /// tell.
    [[nodiscard]] StringDictionary overridesDb() const;
    /// The same from the tool's listing, a line "identifier" => true an override.
    [[nodiscard]] static StringDictionary overridesInListing(std::string_view listing);
    /// A daemon without an override is enabled.
    [[nodiscard]] static bool isEnabledIn(const StringDictionary& overrides, std::string_view identifier);
    /// Loads or unloads the daemon for good. False if the tool is missing or did not run to its end.
    bool setDaemonEnabled(bool enabled);
    [[nodiscard]] OZFileDaemon& fileDaemon() const { return *_fileDaemon; }

  private:
    OZOverrideDaemon(platform::Device& device, std::string identifier,
                     std::unique_ptr<OZFileDaemon> fileDaemon);

    [[nodiscard]] bool isEnabledInDatabase() const;

    platform::Device& _device;
    bool _enabledState = false;
    std::unique_ptr<OZFileDaemon> _fileDaemon;
    std::string _identifier;
};
