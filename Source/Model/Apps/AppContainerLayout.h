#pragma once

#include "Platform/Device/Generations.h"

#include <iterator>
#include <string_view>

/// The directories in which one generation of the platform keeps its applications and their containers; an
/// empty path means that the generation has none.
struct AppContainerLayout {
    double sinceFoundationVersion = 0;
    std::string_view userAppBundles;
    std::string_view userAppData;
    std::string_view systemAppBundles;
    std::string_view systemAppData;
    std::string_view userGroupData;
    std::string_view systemGroupData;
    std::string_view pluginData;
};

/// Newest first.
inline constexpr AppContainerLayout appContainerLayouts[] = {
    {.sinceFoundationVersion = ios::v9_2,
     .userAppBundles = "/var/containers/Bundle/Application",
     .userAppData = "/var/mobile/Containers/Data/Application",
     .systemAppBundles = "/Applications",
     .systemAppData = "/var/containers/Data/System",
     .userGroupData = "/var/mobile/Containers/Shared/AppGroup",
     .systemGroupData = "/var/containers/Shared/SystemGroup",
     .pluginData = "/var/mobile/Containers/Data/PluginKitPlugin"},
    {.sinceFoundationVersion = ios::v8_0,
     .userAppBundles = "/var/mobile/Containers/Bundle/Application",
     .userAppData = "/var/mobile/Containers/Data/Application",
     .systemAppBundles = "/Applications",
     .systemAppData = "",
     .userGroupData = "/var/mobile/Containers/Shared/AppGroup",
     .systemGroupData = "",
     .pluginData = "/var/mobile/Containers/Data/PluginKitPlugin"},
    // One folder holds an application's bundle and its data.
    {.sinceFoundationVersion = 0,
     .userAppBundles = "/var/mobile/Applications",
     .userAppData = "/var/mobile/Applications",
     .systemAppBundles = "/Applications",
     .systemAppData = "",
     .userGroupData = "",
     .systemGroupData = "",
     .pluginData = ""},
};

constexpr const AppContainerLayout& appContainerLayout(double foundationVersion) {
    for (const auto& layout : appContainerLayouts) {
        if (foundationVersion >= layout.sinceFoundationVersion) {
            return layout;
        }
    }
    return *(std::end(appContainerLayouts) - 1);
}
