#include "Model/Items/Togglable/Daemons/OZDaemonList.h"

#include "Model/Items/Togglable/Daemons/OZDaemonGroup.h"
#include "Model/Items/Togglable/Daemons/OZDaemonTable.h"
#include "Platform/Device/Device.h"

namespace {

std::vector<std::string_view> daemonsOfPlatform(const OZDaemonGroupTableEntry& group, double version) {
    std::vector<std::string_view> identifiers;
    for (const OZDaemonTableEntry& daemon : group.daemons) {
        if (!daemon.identifier.empty() && daemon.bounds.contain(version)) {
            identifiers.push_back(daemon.identifier);
        }
    }
    return identifiers;
}

} // namespace

OZDaemonList::OZDaemonList(platform::Device& device, TextProvider localizedString)
    : _device(device)
    , _localizedString(std::move(localizedString)) {}

void OZDaemonList::initializeItems() {
    const double version = _device.facts().foundationVersion;
    for (const OZDaemonGroupTableEntry& entry : daemonGroupTable) {
        auto group =
            OZDaemonGroup::make(_device, std::string(entry.identifier), daemonsOfPlatform(entry, version));
        if (group) {
            protectedItems().emplace(entry.identifier, std::move(group));
        }
    }
    localize();
}

std::shared_ptr<OZTogglableItem> OZDaemonList::itemWithIdentifier(std::string_view identifier) {
    auto found = OZTogglableItemList::itemWithIdentifier(identifier);
    for (const auto& [key, group] : protectedItems()) {
        if (!found) {
            found = static_cast<OZDaemonGroup&>(*group).itemWithIdentifier(identifier);
        }
    }
    return found;
}

void OZDaemonList::localize() {
    // Groups that nobody has asked for yet get their texts when they are made.
    if (!hasMadeItems()) {
        return;
    }
    for (const OZDaemonGroupTableEntry& entry : daemonGroupTable) {
        if (const auto group = OZTogglableItemList::itemWithIdentifier(entry.identifier)) {
            group->setTitle(_localizedString(entry.titleKey));
            group->setItemDescription(_localizedString(entry.descriptionKey));
        }
    }
}
