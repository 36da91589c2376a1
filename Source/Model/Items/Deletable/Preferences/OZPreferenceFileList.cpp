#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Items/Deletable/Preferences/PreferenceFileTables.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <algorithm>

#include <fmt/format.h>

namespace {

constexpr std::string_view preferenceExtension = ".plist";
constexpr std::string_view textInPlatformsOwnNames = "com.apple.";
// Settings that a package keeps outside of the folders of preferences.
constexpr const char* cachedSettings = "/var/mobile/Library/Caches/libactivator.plist";
constexpr std::string_view cachedSettingsSuffix = " (settings)";

/// The URL that stands for an application's icon. What may not be in a URL's host is escaped.
std::string appIconURLWithIdentifier(std::string_view identifier) {
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    std::string host;
    for (const char byte : identifier) {
        host += allowed.contains(byte) ? std::string(1, byte)
                                       : fmt::format("%{:02X}", static_cast<unsigned char>(byte));
    }
    return fmt::format("OZAppId://{}/", host);
}

/// Gives the list itself, so that it can be checked before it is referred to.
const OZAppList& required(const OZAppList* appList,
                          const OZPreferenceFileList::PackageLabels& packageWorkspace) {
    OZ_REQUIRE(appList && packageWorkspace);
    return *appList;
}

} // namespace

OZPreferenceFileList::OZPreferenceFileList(platform::Device& device, const OZAppList* appList,
                                           PackageLabels packageWorkspace)
    : _device(device)
    , _appList(required(appList, packageWorkspace))
    , _packageLabels(std::move(packageWorkspace)) {}

std::optional<std::string_view> OZPreferenceFileList::knownPreferenceFile(std::string_view fileName) {
    const auto* const known =
        std::ranges::find(knownPreferenceFileTable, fileName, &KnownPreferenceFile::fileName);
    return known == std::end(knownPreferenceFileTable) ? std::nullopt
                                                       : std::optional(known->packageIdentifier);
}

bool OZPreferenceFileList::isExcludedPreferenceFile(std::string_view fileName) {
    return std::ranges::find(excludedPreferenceFileTable, fileName) != std::end(excludedPreferenceFileTable);
}

void OZPreferenceFileList::findItems() {
    auto fileManager = _device.fileManager();
    for (const auto folder : preferenceFolders) {
        const auto names = fileManager.contentsOfDirectoryAtPath(folder);
        for (const std::string& name : names.value_or(std::vector<std::string>())) {
            if (!isExcludedPreferenceFile(name) && !name.contains(textInPlatformsOwnNames) &&
                name.ends_with(preferenceExtension)) {
                addFileAtPath(platform::joinPath(folder, name));
            }
        }
    }
    if (fileManager.fileExistsAtPath(cachedSettings)) {
        addFileAtPath(cachedSettings, cachedSettingsSuffix);
    }
}

void OZPreferenceFileList::addFileAtPath(const std::string& path, std::string_view titleSuffix) {
    auto file = std::make_shared<OZPreferenceFile>(_device, path);
    configurePreferenceFile(*file);
    file->setTitle(file->title().append(titleSuffix));
    addPreferenceFile(std::move(file));
}

void OZPreferenceFileList::configurePreferenceFile(OZPreferenceFile& file) const {
    const auto known = knownPreferenceFile(platform::lastPathComponent(file.path()));
    const std::string identifier(known ? *known : platform::nameWithoutExtension(file.path()));
    const auto app = _appList.appWithIdentifier(identifier);
    if (app && !app->displayName().empty()) {
        file.setTitle(app->displayName());
        file.setIconURL(appIconURLWithIdentifier(app->identifier()));
        return;
    }
    const auto package = _packageLabels(identifier);
    if (package) {
        file.setTitle(package->name);
    }
    file.setIconURL(package ? package->iconURL : std::nullopt);
}

void OZPreferenceFileList::removeFromDevice(const OZDeletableItem& item) {
    std::ignore = _device.fileManager().removeItemAtPath(item.paths().front());
    if (shouldReloadPrefDaemon()) {
        schedulePrefDaemonReload();
    }
}
