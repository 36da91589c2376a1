#include "Model/Plugins/OZPluginLoader.h"

#include "Categories/TextFolding.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr std::string_view defaultsKey = "plugins";
constexpr std::string_view winterBoard = "winterboard";

// From here on libraries are not loaded, and up to there icons need one of their own.
constexpr double firstVersionWithoutLibraries = ios::v11_1;
constexpr double firstVersionWithoutIconBundles = ios::v9_0;

constexpr std::string_view activatorDylib = "/Library/MobileSubstrate/DynamicLibraries/Activator.dylib";
constexpr std::string_view flipswitchDylib = "/Library/MobileSubstrate/DynamicLibraries/Flipswitch.dylib";
constexpr std::string_view winterBoardDylib = "/Library/MobileSubstrate/DynamicLibraries/WinterBoard.dylib";
constexpr std::string_view iconBundlesDylib = "/Library/MobileSubstrate/DynamicLibraries/IconBundles.dylib";
constexpr std::string_view anemoneDylib = "/Library/MobileSubstrate/DynamicLibraries/AnemoneCore.dylib";
constexpr std::string_view anemoneParts[] = {"/Library/MobileSubstrate/DynamicLibraries/AnemoneIcons.dylib",
                                             "/Library/MobileSubstrate/DynamicLibraries/AnemoneUIKit.dylib"};

struct PluginRow {
    std::string_view identifier;
    std::string_view dependency;
    std::string_view dylibPath;
    std::string_view title;
    bool requiresRespring;
};

/// Of two rows with one identifier, the second serves if its library is there and that of the first is not.
constexpr PluginRow pluginTable[] = {
    {OZPluginLoader::activatorIdentifier, "libactivator", activatorDylib, "Activator", true},
    {OZPluginLoader::flipswitchIdentifier, "com.a3tweaks.flipswitch", flipswitchDylib, "Flipswitch", true},
    {OZPluginLoader::themingIdentifier, winterBoard, winterBoardDylib, "WinterBoard", false},
    {OZPluginLoader::themingIdentifier, "com.anemonetheming.anemone", anemoneDylib, "Anemone", false},
};

OZPlugin pluginOfRow(const platform::Device& device, const PluginRow& row) {
    OZPlugin plugin(device, std::string(row.identifier), std::string(row.dependency),
                    std::string(row.dylibPath), row.requiresRespring);
    plugin.setTitle(std::string(row.title));
    return plugin;
}

std::optional<bool> choiceAt(const platform::Dictionary& choices, const std::string& identifier) {
    const auto found = choices.find(identifier);
    return found == choices.end() ? std::nullopt : found->second.truthValue();
}

} // namespace

OZPluginLoader::OZPluginLoader(platform::Device& device)
    : _device(device) {
    for (const PluginRow& row : pluginTable) {
        OZPlugin plugin = pluginOfRow(device, row);
        const auto present = _plugins.find(row.identifier);
        if (present == _plugins.end() || (!present->second.available() && plugin.available())) {
            _plugins.insert_or_assign(std::string(row.identifier), std::move(plugin));
        }
    }
}

void OZPluginLoader::loadDefaults() {
    auto& defaults = _device.standardUserDefaults();
    auto choices = defaults.dictionaryForKey(defaultsKey).value_or(platform::Dictionary());
    for (auto& [identifier, plugin] : _plugins) {
        plugin.setEnabled(choiceAt(choices, identifier).value_or(!plugin.requiresRespring()));
    }
    if (choices.empty()) {
        return;
    }
    std::erase_if(choices, [this](const auto& choice) { return !_plugins.contains(choice.first); });
    if (choices.empty()) {
        defaults.removeObjectForKey(defaultsKey);
    } else {
        defaults.setObject(defaultsKey, std::move(choices));
    }
}

void OZPluginLoader::writeDefaults() {
    auto& defaults = _device.standardUserDefaults();
    auto choices = defaults.dictionaryForKey(defaultsKey).value_or(platform::Dictionary());
    for (const auto& [identifier, plugin] : _plugins) {
        choices[identifier] = plugin.enabled();
    }
    defaults.setObject(defaultsKey, std::move(choices));
}

std::vector<OZPlugin*> OZPluginLoader::allPlugins() {
    std::vector<OZPlugin*> all;
    for (auto& [identifier, plugin] : _plugins) {
        all.push_back(&plugin);
    }
    std::ranges::sort(all, {}, [](const OZPlugin* plugin) { return caseFoldedString(plugin->title()); });
    return all;
}

OZPlugin* OZPluginLoader::pluginWithIdentifier(std::string_view identifier) {
    const auto found = _plugins.find(identifier);
    return found == _plugins.end() ? nullptr : &found->second;
}

bool OZPluginLoader::shouldPluginBeLoaded(std::string_view identifier) const {
    const auto found = _plugins.find(identifier);
    return found != _plugins.end() && found->second.available() && found->second.enabled();
}

std::vector<std::string> OZPluginLoader::pluginIdentifiersToLoadIntoSpringBoard() const {
    std::vector<std::string> identifiers;
    for (const auto& [identifier, plugin] : _plugins) {
        if (plugin.requiresRespring() && shouldPluginBeLoaded(identifier)) {
            identifiers.push_back(identifier);
        }
    }
    return identifiers;
}

void OZPluginLoader::loadThirdPartyDylibs(const LibraryLoader& load) const {
    const double version = _device.facts().foundationVersion;
    if (version >= firstVersionWithoutLibraries) {
        return;
    }
    std::ignore = load(activatorDylib);
    if (!shouldPluginBeLoaded(themingIdentifier)) {
        return;
    }
    if (_plugins.find(themingIdentifier)->second.dependency() == winterBoard) {
        if (load(winterBoardDylib) && version < firstVersionWithoutIconBundles) {
            std::ignore = load(iconBundlesDylib);
        }
    } else if (load(anemoneDylib)) {
        for (const std::string_view part : anemoneParts) {
            std::ignore = load(part);
        }
    }
}
