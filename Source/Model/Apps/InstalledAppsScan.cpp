#include "Model/Apps/InstalledAppsScan.h"

#include "Model/Apps/AppContainerLayout.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/DeviceNames.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view metadataIdentifier = "MCMMetadataIdentifier";
constexpr uint64_t metadataLimit = uint64_t{1} << 20U;
constexpr std::string_view groupsEntitlement = "com.apple.security.application-groups";
constexpr std::string_view groupPrefix = "group.";

/// Paths by identifier.
using Containers = std::map<std::string, std::string, std::less<>>;
using InfoDictionaries = InstalledApps::InfoDictionaries;

class InstalledAppsScan {
  public:
    explicit InstalledAppsScan(platform::Device& device)
        : _fileManager(device.fileManager())
        , _layout(appContainerLayout(device.facts().foundationVersion)) {}

    InstalledApps run();

  private:
    /// Paths of the folders in a folder, in the order of their names. No link is one.
    std::vector<std::string> foldersIn(std::string_view folder);
    /// The same where links count, which move bundles to roomier places.
    std::vector<std::string> bundlesIn(std::string_view folder, std::string_view suffix);
    Containers containersIn(std::string_view folder);

    void addApp(const std::string& bundle, const std::string* bundleContainer, InfoDictionaries& apps);
    platform::Dictionary pluginContainersOf(std::string_view bundle);
    void addNamedGroups(const platform::Dictionary& infoPlist, std::string_view identifier,
                        platform::Dictionary& info);
    void addGroupsByName();

    /// The result's value, or an empty one; notes the error.
    template <class T>
    T valueOf(platform::Result<T> result) {
        if (!result) {
            _apps.noteError(result.error());
        }
        return std::move(result).value_or(T{});
    }

    platform::FileManager _fileManager;
    const AppContainerLayout& _layout;
    InstalledApps _apps;
    Containers _dataContainers;
    Containers _groupContainers;
    Containers _pluginContainers;
    /// Identifiers of applications that tell their groups themselves.
    std::set<std::string, std::less<>> _appsWithNamedGroups;
};

std::vector<std::string> InstalledAppsScan::foldersIn(std::string_view path) {
    const auto folder = path.empty() ? nullptr : valueOf(_fileManager.folderAtPath(path));
    auto names = folder ? valueOf(folder->entries()) : std::vector<std::string>{};
    std::erase_if(names, [&](const std::string& name) {
        return valueOf(platform::Item(folder, name).attributes()).type != platform::FileType::directory;
    });
    std::ranges::sort(names);
    for (auto& name : names) {
        name = platform::joinPath(path, name);
    }
    return names;
}

std::vector<std::string> InstalledAppsScan::bundlesIn(std::string_view folder, std::string_view suffix) {
    auto names = valueOf(_fileManager.contentsOfDirectoryAtPath(folder));
    std::erase_if(names, [&](const std::string& name) { return !name.ends_with(suffix); });
    std::ranges::sort(names);
    for (auto& name : names) {
        name = platform::joinPath(folder, name);
    }
    return names;
}

Containers InstalledAppsScan::containersIn(std::string_view folder) {
    Containers containers;
    for (auto& container : foldersIn(folder)) {
        const auto metadata = valueOf(readDictionary(
            _fileManager, platform::joinPath(container, devicename::containerMetadata), metadataLimit));
        if (const auto* identifier = platform::valueAt<std::string>(metadata, metadataIdentifier)) {
            containers.emplace(*identifier, std::move(container));
        } else {
            _apps.hasNameless = true;
        }
    }
    return containers;
}

void InstalledAppsScan::addApp(const std::string& bundle, const std::string* bundleContainer,
                               InfoDictionaries& apps) {
    const auto infoPlist = valueOf(readInfoPlist(_fileManager, bundle));
    auto info = infoDictionaryOfBundle(infoPlist, bundle);
    if (!info) {
        _apps.hasNameless = true;
        return;
    }
    const std::string identifier = *platform::valueAt<std::string>(*info, infokey::identifier);
    if (bundleContainer != nullptr) {
        info->emplace(infokey::bundleContainer, *bundleContainer);
    }
    if (const auto data = _dataContainers.find(identifier); data != _dataContainers.end()) {
        info->emplace(infokey::container, data->second);
    }
    if (auto plugins = pluginContainersOf(bundle); !plugins.empty()) {
        info->emplace(infokey::pluginDataContainers, std::move(plugins));
    }
    addNamedGroups(infoPlist, identifier, *info);
    apps.emplace(identifier, std::move(*info));
}

platform::Dictionary InstalledAppsScan::pluginContainersOf(std::string_view bundle) {
    platform::Dictionary containers;
    for (const auto& plugin : bundlesIn(platform::joinPath(bundle, "PlugIns"), ".appex")) {
        const auto infoPlist = valueOf(readInfoPlist(_fileManager, plugin));
        const auto* identifier = platform::valueAt<std::string>(infoPlist, infokey::identifier);
        const auto found = identifier ? _pluginContainers.find(*identifier) : _pluginContainers.end();
        if (found != _pluginContainers.end()) {
            containers.insert_or_assign(found->first, found->second);
        }
    }
    return containers;
}

void InstalledAppsScan::addNamedGroups(const platform::Dictionary& infoPlist, std::string_view identifier,
                                       platform::Dictionary& info) {
    const auto* groups = platform::valueAt<platform::Array>(infoPlist, groupsEntitlement);
    if (groups == nullptr) {
        return;
    }
    _appsWithNamedGroups.emplace(identifier);
    platform::Dictionary containers;
    for (const auto& group : *groups) {
        const auto* name = group.as<std::string>();
        const auto found = name ? _groupContainers.find(*name) : _groupContainers.end();
        if (found != _groupContainers.end()) {
            containers.insert_or_assign(found->first, found->second);
        }
    }
    if (!containers.empty()) {
        info.emplace(infokey::groupDataContainers, std::move(containers));
    }
}

/// The entitlements that tie groups to applications cannot be read from a tree. By custom a group is called
/// after its application, so it goes to the one whose identifier is the longest beginning of its name.
void InstalledAppsScan::addGroupsByName() {
    for (const auto& [group, container] : _groupContainers) {
        if (!group.starts_with(groupPrefix)) {
            continue;
        }
        auto owner = std::string_view(group).substr(groupPrefix.size());
        while (!owner.empty() && !_apps.userAppInfo.contains(owner) && !_apps.systemAppInfo.contains(owner)) {
            owner = owner.substr(0, std::max<size_t>(owner.rfind('.') + 1, 1) - 1);
        }
        if (_appsWithNamedGroups.contains(owner)) {
            continue;
        }
        for (auto* infos : {&_apps.userAppInfo, &_apps.systemAppInfo}) {
            if (const auto info = infos->find(owner); info != infos->end()) {
                auto& groups = info->second[std::string(infokey::groupDataContainers)];
                groups.as<platform::Dictionary>()->emplace(group, container);
            }
        }
    }
}

InstalledApps InstalledAppsScan::run() {
    _dataContainers = containersIn(_layout.userAppData);
    _groupContainers = containersIn(_layout.userGroupData);
    _pluginContainers = containersIn(_layout.pluginData);
    for (const auto& container : foldersIn(_layout.userAppBundles)) {
        for (const auto& bundle : bundlesIn(container, ".app")) {
            addApp(bundle, &container, _apps.userAppInfo);
        }
    }
    for (const auto& bundle : bundlesIn(_layout.systemAppBundles, ".app")) {
        addApp(bundle, nullptr, _apps.systemAppInfo);
    }
    addGroupsByName();
    return std::move(_apps);
}

} // namespace

InstalledApps scanInstalledApps(platform::Device& device) {
    return InstalledAppsScan(device).run();
}
