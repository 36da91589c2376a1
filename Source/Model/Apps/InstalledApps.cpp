#include "Model/Apps/InstalledApps.h"

#include "Platform/Files/FileManager.h"

#include <algorithm>

namespace {

// Far more than any bundle has, and little enough to be read for each of a thousand.
constexpr uint64_t infoPlistLimit = uint64_t{1} << 20U;

} // namespace

void InstalledApps::noteError(const std::error_code& error) {
    constexpr std::errc natural[] = {
        std::errc::no_such_file_or_directory,
        std::errc::not_a_directory,
        std::errc::is_a_directory,
        std::errc::too_many_symbolic_link_levels,
        std::errc::operation_not_permitted,
        std::errc::invalid_argument,
        std::errc::file_too_large,
        std::errc::illegal_byte_sequence,
        std::errc::filename_too_long,
    };
    isComplete &= std::ranges::any_of(natural, [&](const std::errc code) { return error == code; });
}

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
