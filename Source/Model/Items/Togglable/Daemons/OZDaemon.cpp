#include "Model/Items/Togglable/Daemons/OZDaemon.h"

#include "Model/Items/Togglable/Daemons/OZOverrideDaemon.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

namespace {

constexpr double firstVersionWithOverrides = ios::v10_0;
constexpr std::string_view vendorPrefix = "com.apple.";

} // namespace

bool OZDaemon::usesLaunchCtl(const platform::Device& device) {
    return device.facts().foundationVersion >= firstVersionWithOverrides;
}

std::shared_ptr<OZDaemon> OZDaemon::make(platform::Device& device, std::string_view identifier) {
    std::unique_ptr<OZTogglableItem> implementor;
    if (usesLaunchCtl(device)) {
        implementor = OZOverrideDaemon::make(device, identifier);
    } else {
        implementor = OZFileDaemon::make(device, identifier);
    }
    if (!implementor) {
        return nullptr;
    }
    const std::shared_ptr<OZDaemon> daemon(new OZDaemon(std::move(implementor)));
    daemon->updateTitleFromIdentifier(identifier);
    return daemon;
}

OZDaemon::OZDaemon(std::unique_ptr<OZTogglableItem> implementor)
    : _implementor(std::move(implementor)) {}

void OZDaemon::updateTitleFromIdentifier(std::string_view identifier) {
    if (identifier.starts_with(vendorPrefix) && identifier.size() > vendorPrefix.size()) {
        identifier.remove_prefix(vendorPrefix.size());
    }
    _title = identifier;
}
