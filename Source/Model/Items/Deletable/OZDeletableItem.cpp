#include "Model/Items/Deletable/OZDeletableItem.h"

#include "Categories/NSStringByteFormatter.h"
#include "Platform/Device.h"

namespace {

/// Bytes of an item, or of all that is below a folder; a link counts for itself. What cannot be read counts
/// nothing.
uint64_t sizeOfItemAtPath(platform::FileManager& fileManager, const std::string& path) {
    const auto item = fileManager.itemAtPath(path);
    const auto attributes = item ? item->attributes() : std::unexpected(item.error());
    if (!attributes) {
        return 0;
    }
    if (attributes->type != platform::FileType::directory) {
        return attributes->size;
    }
    uint64_t size = 0;
    const auto enumerator = item->enumerate();
    while (enumerator && enumerator->nextObject()) {
        const auto entry = enumerator->fileAttributes();
        size += entry ? entry->size : 0;
    }
    return size;
}

} // namespace

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
        _humanReadableSize = humanReadableStringFromBytes(size, {.fractionalDigits = 2, .unit = 0});
    }
    return *_humanReadableSize;
}
