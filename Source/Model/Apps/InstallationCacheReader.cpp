#include "Model/Apps/InstallationCacheReader.h"

#include "Platform/Device/Device.h"
#include "Platform/Device/DeviceNames.h"

#include <algorithm>
#include <set>

namespace {

// It holds the Info.plist of every application.
constexpr uint64_t cacheFileLimit = uint64_t{64} << 20U;
constexpr std::string_view userAppsFolder = "/private/var/mobile/Applications";
// Deliberately unknown, so that nothing of it is ever touched.
constexpr std::string_view unknownApp = "biteSMS.app";
constexpr std::string_view privateFolder = "/private";

using KnownFolders = std::set<std::string, std::less<>>;

InstalledApps::InfoDictionaries dictionariesAt(const platform::Dictionary& cache, std::string_view key) {
    InstalledApps::InfoDictionaries dictionaries;
    if (const auto* entries = platform::valueAt<platform::Dictionary>(cache, key)) {
        for (const auto& [identifier, entry] : *entries) {
            if (const auto* info = entry.as<platform::Dictionary>()) {
                dictionaries.emplace(identifier, *info);
            }
        }
    }
    return dictionaries;
}

KnownFolders knownFolders(const InstalledApps& apps) {
    KnownFolders known;
    for (const auto& [identifier, info] : apps.userAppInfo) {
        const auto* path = platform::valueAt<std::string>(info, infokey::path);
        if (const auto* container = platform::valueAt<std::string>(info, infokey::container)) {
            known.insert(*container);
        } else if (path != nullptr) {
            known.emplace(platform::deletingLastPathComponent(*path));
        }
    }
    for (const auto& [identifier, info] : apps.systemAppInfo) {
        for (const auto key : {infokey::path, infokey::container}) {
            if (const auto* path = platform::valueAt<std::string>(info, key)) {
                known.insert(*path);
            }
        }
    }
    return known;
}

std::vector<std::string> namesIn(platform::FileManager& fileManager, std::string_view folder,
                                 InstalledApps& apps) {
    auto names = fileManager.contentsOfDirectoryAtPath(folder);
    if (!names) {
        apps.noteError(names.error());
    }
    return std::move(names).value_or(std::vector<std::string>{});
}

std::optional<platform::Dictionary> infoOfBundle(platform::FileManager& fileManager, std::string_view path,
                                                 InstalledApps& apps) {
    const auto infoPlist = readInfoPlist(fileManager, path);
    if (!infoPlist) {
        apps.noteError(infoPlist.error());
    }
    auto info = infoPlist ? infoDictionaryOfBundle(*infoPlist, path) : std::nullopt;
    apps.hasNameless |= !info;
    return info;
}

void addUserApps(platform::FileManager& fileManager, const KnownFolders& known, InstalledApps& apps) {
    InstalledApps::InfoDictionaries found;
    for (const auto& name : namesIn(fileManager, userAppsFolder, apps)) {
        const auto container = platform::joinPath(userAppsFolder, name);
        // The cache names the folder with and without the link's own folder.
        if (known.contains(container) ||
            known.contains(std::string_view(container).substr(privateFolder.size()))) {
            continue;
        }
        for (const auto& item : namesIn(fileManager, container, apps)) {
            if (!item.ends_with(".app")) {
                continue;
            }
            const auto path = platform::joinPath(container, item);
            if (auto info = infoOfBundle(fileManager, path, apps)) {
                info->insert_or_assign(std::string(infokey::container), container);
                found.insert_or_assign(*platform::valueAt<std::string>(*info, infokey::identifier),
                                       std::move(*info));
            }
        }
    }
    apps.userAppInfo.merge(found);
}

void addSystemApps(platform::FileManager& fileManager, const KnownFolders& known, InstalledApps& apps) {
    InstalledApps::InfoDictionaries found;
    for (const auto& item : namesIn(fileManager, devicename::systemApps, apps)) {
        if (!item.ends_with(".app") || item.ends_with(unknownApp)) {
            continue;
        }
        const auto path = platform::joinPath(devicename::systemApps, item);
        if (auto info = known.contains(path) ? std::nullopt : infoOfBundle(fileManager, path, apps)) {
            found.insert_or_assign(*platform::valueAt<std::string>(*info, infokey::identifier),
                                   std::move(*info));
        }
    }
    apps.systemAppInfo.merge(found);
}

} // namespace

InstalledApps readInstallationCache(platform::Device& device) {
    auto fileManager = device.fileManager();
    InstalledApps apps;
    if (const auto cache = readDictionary(fileManager, devicename::installationCache, cacheFileLimit)) {
        apps.systemAppInfo = dictionariesAt(*cache, "System");
        apps.userAppInfo = dictionariesAt(*cache, "User");
    } else {
        apps.noteError(cache.error());
    }
    std::erase_if(apps.systemAppInfo, [](const auto& app) {
        const auto* path = platform::valueAt<std::string>(app.second, infokey::path);
        return path != nullptr && path->ends_with(unknownApp);
    });
    const auto known = knownFolders(apps);
    addUserApps(fileManager, known, apps);
    addSystemApps(fileManager, known, apps);
    return apps;
}
