#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

namespace platform {
class Device;
}
class OZCSAddon;

/// All Cydia Substrate add-ons of the device, by file name without extension.
class OZCSAddonList : public OZTogglableItemList {
  public:
    /// The key of the add-on that loads preference bundles.
    static constexpr std::string_view preferenceLoaderIdentifier = "PreferenceLoader";

    /// The device outlives the list.
    explicit OZCSAddonList(platform::Device& device);

    /// In the order of their identifiers.
    [[nodiscard]] std::vector<std::shared_ptr<OZCSAddon>> addons();

  protected:
    void initializeItems() override;

  private:
    /// PreferenceLoader's disabled file has a name of its own; one item takes the place of whatever items its
    /// files made. Throws platform::Exception where neither of its own two files stands.
    void detectPreferenceLoader();

    platform::Device& _device;
};
