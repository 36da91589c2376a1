// What the user has excluded applications from.
#include "Model/Apps/OZAppList.h"
#include "Platform/Device/Device.h"

#include <ranges>

namespace {

constexpr std::string_view excludedAppsKey = "excludedApps";

} // namespace

bool OZAppList::isInstalled(std::string_view identifier) const {
    return _userApps.contains(identifier) || _systemApps.contains(identifier);
}

std::vector<std::string> OZAppList::excludedAppsIdentifiers() const {
    const auto identifiers = _excludedApps | std::views::keys;
    return {identifiers.begin(), identifiers.end()};
}

OZAppList::Exclusions OZAppList::excludedAppsWithExclusionMask(OZExclusionMask mask) const {
    auto exclusions = _excludedApps;
    std::erase_if(exclusions, [&](const auto& exclusion) { return !shareBit(exclusion.second, mask); });
    return exclusions;
}

OZExclusionMask OZAppList::exclusionMaskForApp(std::string_view identifier) const {
    const auto found = _excludedApps.find(identifier);
    return found == _excludedApps.end() ? OZExclusionMask::none : found->second;
}

bool OZAppList::isAppExcluded(std::string_view identifier) const {
    return exclusionMaskForApp(identifier) != OZExclusionMask::none;
}

bool OZAppList::isAppExcluded(std::string_view identifier, OZExclusionMask mask) const {
    return shareBit(exclusionMaskForApp(identifier), mask);
}

void OZAppList::removeAllExcludedApps() {
    _excludedApps.clear();
}

void OZAppList::removeExclusionMaskForApp(std::string_view identifier) {
    if (const auto found = _excludedApps.find(identifier); found != _excludedApps.end()) {
        _excludedApps.erase(found);
    }
}

void OZAppList::setExclusionMask(OZExclusionMask mask, std::string_view identifier) {
    if (!isInstalled(identifier)) {
        return;
    }
    if (mask == OZExclusionMask::none) {
        removeExclusionMaskForApp(identifier);
    } else {
        _excludedApps.insert_or_assign(std::string(identifier), mask);
    }
}

void OZAppList::toggleExclusionMask(OZExclusionMask mask, std::string_view identifier) {
    setExclusionMask(exclusionMaskForApp(identifier) ^ mask, identifier);
}

void OZAppList::loadDefaults() {
    const auto stored = _device.standardUserDefaults().dictionaryForKey(excludedAppsKey);
    for (const auto& [identifier, mask] : stored.value_or(platform::Dictionary{})) {
        // Settings that somebody wrote by hand may hold it as a text.
        if (const auto number = mask.numberValue()) {
            const auto bits = platform::Value(*number).unsignedValue().value_or(0);
            if (_hasNameless && bits != 0 && !isInstalled(identifier)) {
                noteIncomplete();
            }
            setExclusionMask(static_cast<OZExclusionMask>(bits), identifier);
        }
    }
}

void OZAppList::writeDefaults() {
    if (!_isComplete) {
        return;
    }
    auto& defaults = _device.standardUserDefaults();
    if (_excludedApps.empty()) {
        defaults.removeObjectForKey(excludedAppsKey);
        return;
    }
    platform::Dictionary stored;
    for (const auto& [identifier, mask] : _excludedApps) {
        stored.emplace(identifier, static_cast<int64_t>(mask));
    }
    defaults.setObject(excludedAppsKey, std::move(stored));
}
