#include "Model/Items/Togglable/Daemons/OZFileDaemon.h"

#include "Model/Items/Togglable/OZTogglableFile.h"
#include "Platform/Device/Device.h"

#include <fmt/format.h>

namespace {

constexpr uid_t root = 0;
constexpr gid_t wheel = 0;
constexpr mode_t propertyListMode = 0644;

struct Location {
    std::string_view enabledFolder;
    std::string_view disabledFolder;
};

constexpr Location locations[] = {
    {.enabledFolder = "/System/Library/LaunchDaemons/",
     .disabledFolder = "/System/Library/LaunchDaemonsBAK/"},
    {.enabledFolder = "/Library/LaunchDaemons/", .disabledFolder = "/Library/LaunchDaemonsBAK/"},
};

const OZTogglableFile& asFile(const std::shared_ptr<OZTogglableItem>& item) {
    return static_cast<const OZTogglableFile&>(*item);
}

} // namespace

std::unique_ptr<OZFileDaemon> OZFileDaemon::make(platform::Device& device, std::string_view identifier) {
    OZ_REQUIRE(!identifier.empty());
    std::unique_ptr<OZFileDaemon> daemon(new OZFileDaemon(device, std::string(identifier)));
    OZTogglableItemMap& files = daemon->protectedItems();
    for (const Location& location : locations) {
        auto file = OZTogglableFile::make(device, identifier,
                                          fmt::format("{}{}.plist", location.enabledFolder, identifier),
                                          fmt::format("{}{}.plist", location.disabledFolder, identifier));
        if (file) {
            files.emplace(fmt::format("{}{}", identifier, files.size()), std::move(file));
        }
    }
    return files.empty() ? nullptr : std::move(daemon);
}

OZFileDaemon::OZFileDaemon(platform::Device& device, std::string identifier)
    : OZTogglableItemList(std::move(identifier))
    , _device(device) {}

bool OZFileDaemon::applyChanges() {
    const bool changed = OZTogglableItemList::applyChanges();
    auto fileManager = _device.fileManager();
    for (const auto& [key, item] : protectedItems()) {
        if (const auto path = asFile(item).currentPath()) {
            std::ignore = fileManager.setOwnerOfItemAtPath(*path, root, wheel);
            std::ignore = fileManager.setPermissionsOfItemAtPath(*path, propertyListMode);
        }
    }
    return changed;
}

std::vector<std::string> OZFileDaemon::enabledPaths() {
    std::vector<std::string> paths;
    for (const auto& [key, item] : protectedItems()) {
        paths.push_back(asFile(item).enabledPath());
    }
    return paths;
}
