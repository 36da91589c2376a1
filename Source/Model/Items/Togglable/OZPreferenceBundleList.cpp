#include "Model/Items/Togglable/OZPreferenceBundleList.h"

#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <set>

namespace {

/// The identifiers of all files that may be pages. Sorted, so that a group's first member does not depend on
/// how the tree is stored.
std::set<std::string> findIdentifiers(platform::FileManager fileManager) {
    std::set<std::string> identifiers;
    const auto enumerator = fileManager.enumeratorAtPath(*OZPreferenceBundle::enabledFolder());
    while (const auto path = enumerator ? enumerator->nextObject() : std::nullopt) {
        const std::string_view extension = platform::pathExtension(*path);
        if (extension == OZPreferenceBundle::enabledExtension() ||
            extension == OZPreferenceBundle::disabledExtension()) {
            identifiers.emplace(platform::withoutPathExtension(*path));
        }
    }
    return identifiers;
}

std::string groupKey(const OZPreferenceBundle& bundle) {
    return bundle.bundle() ? *bundle.bundle() : "@" + bundle.identifier();
}

} // namespace

OZPreferenceBundleList::OZPreferenceBundleList(platform::Device& device)
    : _device(device) {}

void OZPreferenceBundleList::initializeItems() {
    std::map<std::string, std::vector<std::shared_ptr<OZPreferenceBundle>>> members;
    for (const std::string& identifier : findIdentifiers(_device.fileManager())) {
        if (auto bundle = OZPreferenceBundle::make(_device, identifier, identifier)) {
            members[groupKey(*bundle)].push_back(std::move(bundle));
        }
    }
    for (const auto& [key, bundles] : members) {
        const std::string identifier = bundles.front()->identifier();
        protectedItems().insert_or_assign(identifier, OZPreferenceBundleGroup::make(identifier, bundles));
    }
}

std::vector<std::shared_ptr<OZPreferenceBundleGroup>> OZPreferenceBundleList::groups() {
    std::vector<std::shared_ptr<OZPreferenceBundleGroup>> groups;
    for (const auto& [key, item] : protectedItems()) {
        groups.push_back(std::static_pointer_cast<OZPreferenceBundleGroup>(item));
    }
    return groups;
}

std::vector<std::shared_ptr<OZPreferenceBundle>> OZPreferenceBundleList::bundles() {
    std::vector<std::shared_ptr<OZPreferenceBundle>> all;
    for (const auto& group : groups()) {
        const auto bundles = group->bundles();
        all.insert(all.end(), bundles.begin(), bundles.end());
    }
    return all;
}
