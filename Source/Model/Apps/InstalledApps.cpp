#include "Model/Apps/InstalledApps.h"

#include "Platform/FileManager.h"

namespace {

// Far more than any bundle has, and little enough to be read for each of a thousand.
constexpr uint64_t infoPlistLimit = uint64_t{1} << 20U;

} // namespace

InstalledApps listedApps(const platform::Array& applications) {
    InstalledApps apps;
    for (const auto& application : applications) {
        const auto* info = application.as<platform::Dictionary>();
        const auto* type =
            info == nullptr ? nullptr : platform::valueAt<std::string>(*info, infokey::applicationType);
        const auto* identifier =
            type == nullptr ? nullptr : platform::valueAt<std::string>(*info, infokey::identifier);
        if (identifier == nullptr) {
            continue;
        }
        if (*type == "User") {
            apps.userAppInfo.insert_or_assign(*identifier, *info);
        } else if (*type == "System") {
            apps.systemAppInfo.insert_or_assign(*identifier, *info);
        }
    }
    return apps;
}

std::optional<platform::Dictionary> readInfoPlist(platform::FileManager& fileManager,
                                                  std::string_view bundlePath) {
    return readDictionary(fileManager, platform::joinPath(bundlePath, "Info.plist"), infoPlistLimit);
}

std::optional<platform::Dictionary> readDictionary(platform::FileManager& fileManager, std::string_view path,
                                                   uint64_t limit) {
    const auto content = fileManager.contentsAtPath(path, limit);
    auto parsed =
        content ? platform::parsePropertyList(*content) : platform::failure(content.error().value());
    auto* dictionary = parsed ? parsed->as<platform::Dictionary>() : nullptr;
    return dictionary == nullptr ? std::nullopt : std::optional(std::move(*dictionary));
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
