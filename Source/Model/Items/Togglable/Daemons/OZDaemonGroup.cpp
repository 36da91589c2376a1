#include "Model/Items/Togglable/Daemons/OZDaemonGroup.h"

#include "Model/Items/Togglable/Daemons/OZDaemon.h"

std::shared_ptr<OZDaemonGroup> OZDaemonGroup::make(platform::Device& device, std::string identifier,
                                                   const std::vector<std::string_view>& daemonIdentifiers) {
    std::shared_ptr<OZDaemonGroup> group(new OZDaemonGroup(std::move(identifier)));
    OZTogglableItemMap& daemons = group->protectedItems();
    for (const std::string_view daemonIdentifier : daemonIdentifiers) {
        if (auto daemon = OZDaemon::make(device, daemonIdentifier)) {
            daemons.insert_or_assign(std::string(daemonIdentifier), std::move(daemon));
        }
    }
    return daemons.empty() ? nullptr : std::move(group);
}
