#include "Model/Items/Deletable/Dictionaries/OZDMDictionaryList.h"

#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

namespace {

// iOS 8.
constexpr double firstVersionWithAssetService = ios::v8_0;
constexpr std::string_view packageNameKey = "DictionaryPackageName";

} // namespace

bool OZDMDictionaryList::isSupported(const platform::Device& device, const DictionaryAssetService* service) {
    return device.facts().foundationVersion >= firstVersionWithAssetService && service != nullptr;
}

void OZDMDictionaryList::findItems() {
    _assetsByPath.clear();
    for (const auto& asset : _service.availableDefinitionDictionaries()) {
        if (!asset->isPresentOnDisk()) {
            continue;
        }
        const std::string path = asset->localPath();
        const auto attributes = asset->attributes();
        const auto* packageName = platform::valueAt<std::string>(attributes, packageNameKey);
        if (path.empty() || packageName == nullptr) {
            continue;
        }
        if (auto dictionary = OZDictionary::make(device(), platform::joinPath(path, *packageName))) {
            addDictionary(std::move(dictionary));
            _assetsByPath.insert_or_assign(path, asset);
        }
    }
}

void OZDMDictionaryList::removeFromDevice(const OZDeletableItem& item) {
    const std::string_view path = item.paths().front();
    const auto asset = _assetsByPath.find(platform::deletingLastPathComponent(path));
    if (asset != _assetsByPath.end()) {
        asset->second->purge();
        _assetsByPath.erase(asset);
    }
}
