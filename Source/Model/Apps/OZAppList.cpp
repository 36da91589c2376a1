#include "Model/Apps/OZAppList.h"

#include "Model/Apps/AppContainerLayout.h"
#include "Model/Apps/InstallationCacheReader.h"
#include "Model/Apps/InstalledAppsScan.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <cstdio>
#include <ranges>
#include <utility>

#include <fmt/format.h>

namespace {

// iOS 7.1, the last one whose installer keeps a cache file.
constexpr double lastFoundationVersionWithCache = ios::v7_1;
constexpr std::string_view applePrefix = "com.apple";

std::map<std::string, std::shared_ptr<const OZApp>, std::less<>>
makeApps(OZAppType type, const InstalledApps::InfoDictionaries& infos, platform::FileManager& fileManager) {
    std::map<std::string, std::shared_ptr<const OZApp>, std::less<>> apps;
    for (const auto& [identifier, info] : infos) {
        auto app = OZApp::make(type, info);
        if (!app) {
            continue;
        }
        // An application that nobody can look at stays known: what the user has excluded is known by it.
        const auto executable = fileManager.attributesOfTargetAtPath(
            platform::joinPath(app->bundlePath(), app->executableFileName()));
        if (executable || !platform::meansAbsence(executable.error())) {
            apps.emplace(identifier, std::move(app));
        }
    }
    return apps;
}

std::optional<std::string> directory(std::string_view path) {
    return path.empty() ? std::nullopt : std::optional<std::string>(path);
}

const AppContainerLayout& layoutOf(const platform::Device& device) {
    return appContainerLayout(device.facts().foundationVersion);
}

} // namespace

OZAppList::OZAppList(platform::Device& device)
    : _device(device) {
    loadApps();
}

bool OZAppList::appLoadSupportedAPI(const platform::Device& device) {
    return device.facts().applications || device.facts().foundationVersion > lastFoundationVersionWithCache;
}

InstalledApps OZAppList::loadSystemAppInfo(platform::Device& device) {
    if (!appLoadSupportedAPI(device)) {
        return readInstallationCache(device);
    }
    const auto& applications = device.facts().applications;
    return applications ? listedApps(*applications) : scanInstalledApps(device);
}

void OZAppList::loadApps() {
    const auto installed = loadSystemAppInfo(_device);
    _isComplete = true;
    _hasNameless = installed.hasNameless;
    if (!installed.isComplete) {
        noteIncomplete();
    }
    auto fileManager = _device.fileManager();
    _userApps = makeApps(OZAppType::user, installed.userAppInfo, fileManager);
    _systemApps = makeApps(OZAppType::system, installed.systemAppInfo, fileManager);
}

void OZAppList::noteIncomplete() {
    if (std::exchange(_isComplete, false)) {
        _device.warnings().tell(
            "Not all of the device's applications can be read; what depends on them is left alone.");
    }
}

OZAppList::Selection OZAppList::appsOfTypes(OZAppTypeMask typeMask, OZAppFilterMask filterMask) const {
    Selection selection;
    if (shareBit(typeMask, OZAppTypeMask::system)) {
        auto fileManager = _device.fileManager();
        const bool wantsIcon = shareBit(filterMask, OZAppFilterMask::validIcon);
        for (const auto& [identifier, app] : _systemApps) {
            if (!wantsIcon || app->hasValidIcon(fileManager)) {
                selection.emplace(identifier, app);
            }
        }
    }
    if (shareBit(typeMask, OZAppTypeMask::user)) {
        for (const auto& [identifier, app] : _userApps) {
            selection.insert_or_assign(identifier, app);
        }
    }
    return selection;
}

OZAppList::Apps OZAppList::appList(const OZAppQuery& query) const {
    auto selection = appsOfTypes(query.typeMask, query.filterMask);
    for (const auto& identifier : query.includingIdentifiers) {
        if (auto app = appWithIdentifier(identifier)) {
            selection.try_emplace(identifier, std::move(app));
        }
    }
    for (const auto& identifier : query.excludingIdentifiers) {
        selection.erase(identifier);
    }
    for (const auto& [identifier, mask] : _excludedApps) {
        if (shareBit(mask, query.exclusionMask)) {
            selection.erase(identifier);
        }
    }
    Apps apps;
    for (auto& [identifier, app] : selection) {
        if (!shareBit(query.filterMask, OZAppFilterMask::noApple) || !identifier.starts_with(applePrefix)) {
            apps.push_back(std::move(app));
        }
    }
    std::ranges::stable_sort(apps, {}, &OZApp::foldedDisplayName);
    return apps;
}

std::shared_ptr<const OZApp> OZAppList::appWithIdentifier(std::string_view identifier) const {
    for (const auto* apps : {&_userApps, &_systemApps}) {
        if (const auto found = apps->find(identifier); found != apps->end()) {
            return found->second;
        }
    }
    return nullptr;
}

std::vector<std::string> OZAppList::pathsForExcludedApps(OZExclusionMask exclusionMask,
                                                         OZAppTypeMask typeMask) const {
    std::vector<std::string> paths;
    for (const auto& identifier : excludedAppsWithExclusionMask(exclusionMask) | std::views::keys) {
        const auto user = _userApps.find(identifier);
        const auto system = _systemApps.find(identifier);
        if (shareBit(typeMask, OZAppTypeMask::user) && user != _userApps.end()) {
            const auto& app = *user->second;
            paths.insert(paths.end(), {app.bundlePath(), *app.dataContainer(), *app.bundleContainer()});
        } else if (shareBit(typeMask, OZAppTypeMask::system) && system != _systemApps.end()) {
            const auto& app = *system->second;
            paths.push_back(app.bundlePath());
            if (app.dataContainer()) {
                paths.push_back(*app.dataContainer());
            }
        }
    }
    return paths;
}

void OZAppList::checkSystemAppIconValidityInBackground() const {
    Apps apps;
    std::ranges::copy(_systemApps | std::views::values, std::back_inserter(apps));
    // The block owns all that it uses: whoever asked may be gone when it runs.
    _device.highPriorityQueue().async(
        [apps = std::move(apps), fileManager = _device.fileManager()]() mutable {
            for (const auto& app : apps) {
                std::ignore = app->hasValidIcon(fileManager);
            }
        });
}

std::optional<std::string> OZAppList::userAppBundleContainerDir() const {
    return directory(layoutOf(_device).userAppBundles);
}

std::optional<std::string> OZAppList::userAppDataContainerDir() const {
    return directory(layoutOf(_device).userAppData);
}

std::optional<std::string> OZAppList::systemAppBundleContainerDir() const {
    return directory(layoutOf(_device).systemAppBundles);
}

std::optional<std::string> OZAppList::systemAppDataContainerDir() const {
    return directory(layoutOf(_device).systemAppData);
}

std::optional<std::string> OZAppList::userGroupDataContainerDir() const {
    return directory(layoutOf(_device).userGroupData);
}

std::optional<std::string> OZAppList::systemGroupDataContainerDir() const {
    return directory(layoutOf(_device).systemGroupData);
}

std::optional<std::string> OZAppList::pluginDataContainerDir() const {
    return directory(layoutOf(_device).pluginData);
}
