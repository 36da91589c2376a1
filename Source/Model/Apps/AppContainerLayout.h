#pragma once

#include "Platform/Device/DeviceNames.h"
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
     .userAppBundles = devicename::userAppBundlesSince9_2,
     .userAppData = devicename::userAppData,
     .systemAppBundles = devicename::systemApps,
     .systemAppData = devicename::systemAppData,
     .userGroupData = devicename::userGroupData,
     .systemGroupData = devicename::systemGroupData,
     .pluginData = devicename::pluginData},
    {.sinceFoundationVersion = ios::v8_0,
     .userAppBundles = devicename::userAppBundlesSince8_0,
     .userAppData = devicename::userAppData,
     .systemAppBundles = devicename::systemApps,
     .systemAppData = "",
     .userGroupData = devicename::userGroupData,
     .systemGroupData = "",
     .pluginData = devicename::pluginData},
    // One folder holds an application's bundle and its data.
    {.sinceFoundationVersion = 0,
     .userAppBundles = devicename::userAppsBefore8_0,
     .userAppData = devicename::userAppsBefore8_0,
     .systemAppBundles = devicename::systemApps,
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
