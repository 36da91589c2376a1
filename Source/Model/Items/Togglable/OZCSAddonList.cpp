#include "Model/Items/Togglable/OZCSAddonList.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <algorithm>

#include <fmt/format.h>

namespace {

constexpr std::string_view disabledPreferenceLoaderName = "PreferenceLoaderDisabled";

} // namespace

OZCSAddonList::OZCSAddonList(platform::Device& device)
    : _device(device) {}

std::vector<std::shared_ptr<OZCSAddon>> OZCSAddonList::addons() {
    std::vector<std::shared_ptr<OZCSAddon>> addons;
    for (const auto& [key, item] : protectedItems()) {
        addons.push_back(std::static_pointer_cast<OZCSAddon>(item));
    }
    return addons;
}

void OZCSAddonList::initializeItems() {
    const auto names = _device.fileManager().contentsOfDirectoryAtPath(*OZCSAddon::enabledFolder());
    for (const std::string& name : names.value_or(std::vector<std::string>())) {
        const std::string_view extension = platform::pathExtension(name);
        if (extension != OZCSAddon::enabledExtension() && extension != OZCSAddon::disabledExtension()) {
            continue;
        }
        const std::string_view identifier = platform::withoutPathExtension(name);
        if (auto addon = OZTogglableFile::make<OZCSAddon>(_device, identifier, identifier)) {
            protectedItems().insert_or_assign(std::string(identifier), std::move(addon));
        }
    }
    detectPreferenceLoader();
}

void OZCSAddonList::detectPreferenceLoader() {
    OZTogglableItemMap& items = protectedItems();
    size_t found = 0;
    for (const std::string_view name : {preferenceLoaderIdentifier, disabledPreferenceLoaderName}) {
        found += items.erase(std::string(name));
    }
    if (found == 0) {
        return;
    }
    const std::string_view folder = *OZCSAddon::enabledFolder();
    auto addon = OZTogglableFile::make<OZCSAddon>(
        _device, preferenceLoaderIdentifier,
        fmt::format("{}{}.{}", folder, preferenceLoaderIdentifier, *OZCSAddon::enabledExtension()),
        fmt::format("{}{}.{}", folder, disabledPreferenceLoaderName, *OZCSAddon::disabledExtension()));
    if (!addon) {
        throw platform::Exception(
            platform::invalidArgumentException,
            fmt::format("PreferenceLoader's file in {} has a name that is not its own: "
                        "it is PreferenceLoader.dylib, or PreferenceLoaderDisabled.disabled",
                        folder));
    }
    items.emplace(preferenceLoaderIdentifier, std::move(addon));
}
