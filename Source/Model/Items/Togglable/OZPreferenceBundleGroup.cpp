#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"

#include "Model/Items/Togglable/OZPreferenceBundle.h"

std::shared_ptr<OZPreferenceBundleGroup>
OZPreferenceBundleGroup::make(std::string identifier,
                              const std::vector<std::shared_ptr<OZPreferenceBundle>>& bundles) {
    if (bundles.empty()) {
        return nullptr;
    }
    std::shared_ptr<OZPreferenceBundleGroup> group(new OZPreferenceBundleGroup(std::move(identifier)));
    for (const auto& bundle : bundles) {
        group->protectedItems().insert_or_assign(bundle->identifier(), bundle);
    }
    group->setTitle(bundles.front()->title());
    return group;
}

std::vector<std::shared_ptr<OZPreferenceBundle>> OZPreferenceBundleGroup::bundles() {
    std::vector<std::shared_ptr<OZPreferenceBundle>> bundles;
    for (const auto& [key, item] : protectedItems()) {
        bundles.push_back(std::static_pointer_cast<OZPreferenceBundle>(item));
    }
    return bundles;
}

std::shared_ptr<OZPreferenceBundle> OZPreferenceBundleGroup::bundleForCurrentiOSVersion() {
    std::shared_ptr<OZPreferenceBundle> current;
    for (auto& bundle : bundles()) {
        if (bundle->isForCurrentiOSVersion()) {
            current = std::move(bundle);
        }
    }
    return current;
}

std::optional<std::string> OZPreferenceBundleGroup::iconURL() {
    const auto bundle = bundleForCurrentiOSVersion();
    return bundle ? bundle->iconURL() : std::nullopt;
}

std::shared_ptr<OZPackage> OZPreferenceBundleGroup::package() {
    return bundles().front()->package();
}
