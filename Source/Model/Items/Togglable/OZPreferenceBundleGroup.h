#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

class OZPackage;
class OZPreferenceBundle;

/// All property lists of one bundle, of which each may serve other versions of the platform. One switch sets
/// them all.
class OZPreferenceBundleGroup : public OZTogglableItemList {
  public:
    /// A group under the title of its first member; null for no members.
    static std::shared_ptr<OZPreferenceBundleGroup>
    make(std::string identifier, const std::vector<std::shared_ptr<OZPreferenceBundle>>& bundles);

    /// In the order of their identifiers.
    [[nodiscard]] std::vector<std::shared_ptr<OZPreferenceBundle>> bundles();
    /// The last one that serves the device's version; null if none does.
    [[nodiscard]] std::shared_ptr<OZPreferenceBundle> bundleForCurrentiOSVersion();
    /// That of the bundle for the device's version.
    [[nodiscard]] std::optional<std::string> iconURL() override;
    /// The first bundle's package; null until its owner is known.
    [[nodiscard]] std::shared_ptr<OZPackage> package();

  private:
    using OZTogglableItemList::OZTogglableItemList;
};
