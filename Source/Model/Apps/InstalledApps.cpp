#include "Model/Apps/InstalledApps.h"

#include "Platform/Files/FileManager.h"

#include <algorithm>

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
