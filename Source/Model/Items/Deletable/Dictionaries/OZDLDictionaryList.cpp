#include "Model/Items/Deletable/Dictionaries/OZDLDictionaryList.h"

#include "Platform/Device/Device.h"
#include "Platform/Device/DeviceNames.h"

using platform::deletingLastPathComponent;

namespace {

constexpr std::string_view assetsOfDictionaries = "com_apple_MobileAsset_DictionaryServices_dictionary";
constexpr std::string_view dictionaryFolders[] = {"/Library/Dictionaries",
                                                  "/var/mobile/Library/Dictionaries"};
constexpr std::string_view dictionaryExtension = ".dictionary";
constexpr std::string_view assetExtension = ".asset";

/// What is to be removed for a dictionary below the assets folder; both are relative to that.
std::string_view assetOfDictionary(std::string_view dictionary) {
    const auto asset = deletingLastPathComponent(deletingLastPathComponent(dictionary));
    return asset.ends_with(assetExtension) ? asset : dictionary;
}

} // namespace

void OZDLDictionaryList::findItems() {
    findAssets();
    for (const auto folder : dictionaryFolders) {
        findInFolder(folder);
    }
}

void OZDLDictionaryList::findAssets() {
    const auto folder = _device.fileManager().folderAtPath(devicename::mobileAssets);
    if (!folder) {
        return;
    }
    for (const std::string& name : (*folder)->entries().value_or(std::vector<std::string>())) {
        const auto enumerator =
            name.starts_with(assetsOfDictionaries) ? platform::Item(*folder, name).enumerate() : nullptr;
        while (const auto path = enumerator ? enumerator->nextObject() : std::nullopt) {
            if (path->ends_with(dictionaryExtension)) {
                addDictionaryAtPath(
                    platform::joinPath(platform::joinPath(devicename::mobileAssets, name), *path));
            }
        }
    }
}

void OZDLDictionaryList::findInFolder(std::string_view folder) {
    const auto names = _device.fileManager().contentsOfDirectoryAtPath(folder);
    for (const std::string& name : names.value_or(std::vector<std::string>())) {
        if (name.ends_with(dictionaryExtension)) {
            addDictionaryAtPath(platform::joinPath(folder, name));
        }
    }
}

void OZDLDictionaryList::addDictionaryAtPath(const std::string& path) {
    if (auto dictionary = OZDictionary::make(_device, path)) {
        addDictionary(std::move(dictionary));
    }
}

void OZDLDictionaryList::removeFromDevice(const OZDeletableItem& item) {
    auto fileManager = _device.fileManager();
    const std::string_view path = item.paths().front();
    const std::string prefix = platform::pathPrefix(devicename::mobileAssets);
    if (!path.starts_with(prefix)) {
        std::ignore = fileManager.removeItemAtPath(path);
        return;
    }
    const auto assets = fileManager.folderAtPath(devicename::mobileAssets);
    const auto asset = assets ? fileManager.itemBelow(*assets, assetOfDictionary(path.substr(prefix.size())))
                              : std::unexpected(assets.error());
    if (asset) {
        std::ignore = asset->remove();
        fileManager.forgetLastFolder();
    }
}
