#include "Model/Apps/InfoPlist.h"

#include "Platform/Files/FileManager.h"

#include <algorithm>
#include <cerrno>

namespace {

// Far more than any bundle has, and little enough to be read for each of a thousand.
constexpr uint64_t infoPlistLimit = uint64_t{1} << 20U;

} // namespace

platform::Result<platform::Dictionary> readInfoPlist(platform::FileManager& fileManager,
                                                     std::string_view bundlePath) {
    return readDictionary(fileManager, platform::joinPath(bundlePath, "Info.plist"), infoPlistLimit);
}

platform::Result<platform::Dictionary> readDictionary(platform::FileManager& fileManager,
                                                      std::string_view path, uint64_t limit) {
    const auto content = fileManager.contentsAtPath(path, limit);
    if (!content) {
        return std::unexpected(content.error());
    }
    auto parsed = platform::parsePropertyList(*content);
    auto* dictionary = parsed ? parsed->as<platform::Dictionary>() : nullptr;
    return dictionary != nullptr ? platform::Result<platform::Dictionary>(std::move(*dictionary))
                                 : platform::failure(EILSEQ);
}

std::optional<platform::Dictionary> infoDictionaryOfBundle(const platform::Dictionary& infoPlist,
                                                           std::string_view bundlePath) {
    if (platform::valueAt<std::string>(infoPlist, infokey::identifier) == nullptr) {
        return std::nullopt;
    }
    platform::Dictionary info{{std::string(infokey::path), bundlePath}};
    for (const auto key : {infokey::executable, infokey::identifier, infokey::displayName, infokey::name}) {
        if (const auto* text = platform::valueAt<std::string>(infoPlist, key)) {
            info.emplace(key, *text);
        }
    }
    return info;
}

namespace infoplist {

std::optional<std::string> textAt(const platform::Dictionary& info, std::string_view key) {
    const auto* text = platform::valueAt<std::string>(info, key);
    return text == nullptr || text->empty() ? std::nullopt : std::optional(*text);
}

std::optional<std::string> pathAt(const platform::Dictionary& info, std::string_view key) {
    auto path = textAt(info, key);
    if (!path || !path->starts_with('/')) {
        return std::nullopt;
    }
    path->resize(std::max<size_t>(path->find_last_not_of('/') + 1, 1));
    return path;
}

std::optional<std::string> identifierAt(const platform::Dictionary& info) {
    auto identifier = textAt(info, infokey::identifier);
    return identifier && platform::isFileName(*identifier) ? identifier : std::nullopt;
}

} // namespace infoplist
