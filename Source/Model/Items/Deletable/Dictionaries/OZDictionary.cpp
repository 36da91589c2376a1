#include "Model/Items/Deletable/Dictionaries/OZDictionary.h"

#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

namespace {

constexpr std::string_view markOfADictionary = "Contents/Info.plist";

} // namespace

std::shared_ptr<OZDictionary> OZDictionary::make(platform::Device& device, std::vector<std::string> paths,
                                                 std::string identifier) {
    const std::shared_ptr<OZDictionary> dictionary(
        new OZDictionary(device, std::move(paths), std::move(identifier)));
    if (!device.fileManager().fileExistsAtPath(platform::joinPath(dictionary->path(), markOfADictionary))) {
        return nullptr;
    }
    dictionary->setTitle(std::string(platform::nameWithoutExtension(dictionary->path())));
    return dictionary;
}

std::shared_ptr<OZDictionary> OZDictionary::make(platform::Device& device, const std::string& path) {
    return make(device, {path}, path);
}
