#include "Model/Items/Deletable/OZDeletableItem.h"

#include "Categories/ByteText.h"
#include "Categories/Files.h"
#include "Platform/Device/Device.h"

OZDeletableItem::OZDeletableItem(platform::Device& device, std::vector<std::string> paths,
                                 std::string identifier)
    : _device(device)
    , _identifier(std::move(identifier))
    , _paths(std::move(paths)) {
    if (_identifier.empty() || _paths.empty()) {
        throw platform::AssertionFailure("identifier && paths.count");
    }
}

OZDeletableItem::OZDeletableItem(platform::Device& device, const std::string& path)
    : OZDeletableItem(device, {path}, path) {}

const std::string& OZDeletableItem::humanReadableSize() {
    if (!_humanReadableSize) {
        auto fileManager = _device.fileManager();
        uint64_t size = 0;
        for (const std::string& path : _paths) {
            size += sizeOfItemAtPath(fileManager, path);
        }
        _humanReadableSize = humanReadableStringFromBytes(size, {.unit = unitForAnySize(size)});
    }
    return *_humanReadableSize;
}
