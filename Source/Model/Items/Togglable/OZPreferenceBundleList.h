#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

namespace platform {
class Device;
}
class OZPreferenceBundle;
class OZPreferenceBundleGroup;

/// All preference bundles of the device: groups of property lists, each under the identifier of its first
/// one. That identifier is the path below the folder of such files, without extension.
class OZPreferenceBundleList : public OZTogglableItemList {
  public:
    /// The device outlives the list.
    explicit OZPreferenceBundleList(platform::Device& device);

    /// In the order of their identifiers.
    [[nodiscard]] std::vector<std::shared_ptr<OZPreferenceBundleGroup>> groups();
    /// Those of all groups, group by group.
    [[nodiscard]] std::vector<std::shared_ptr<OZPreferenceBundle>> bundles();

  protected:
    void initializeItems() override;

  private:
    platform::Device& _device;
};
