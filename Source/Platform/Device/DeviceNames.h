#pragma once

#include <string_view>

/// Names of things on a device that several rooms use, so that each stands in one place. What a single step
/// or list knows stays in its own table.
namespace devicename {

// The program.
/// The "CFBundleIdentifier" of its bundle, and the domain of its preferences.
inline constexpr std::string_view programIdentifier = "com.ozdev90.ozvarine";
/// Where its bundle is on a device that has it installed.
inline constexpr std::string_view programBundle = "/Applications/Ozvarine.app";
inline constexpr std::string_view programPreferences =
    "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";
inline constexpr std::string_view programData = "/var/mobile/Library/Ozvarine";
inline constexpr std::string_view logFile = "/var/mobile/Library/Ozvarine/junk.txt";
/// What test mode puts behind the name of an item that it would have removed.
inline constexpr std::string_view backupExtension = ".OzvarineBackup";

// The user's data.
inline constexpr std::string_view mobileHome = "/var/mobile";
/// The same home as the system itself names it, past the link "/var".
inline constexpr std::string_view privateMobileHome = "/private/var/mobile";
inline constexpr std::string_view mobileAssets = "/var/mobile/Library/Assets";
inline constexpr std::string_view mobilePreferences = "/var/mobile/Library/Preferences";
inline constexpr std::string_view globalPreferences =
    "/var/mobile/Library/Preferences/.GlobalPreferences.plist";
/// What the system knows of the installed applications, on the generations that keep it in a file.
inline constexpr std::string_view installationCache =
    "/var/mobile/Library/Caches/com.apple.mobile.installation.plist";

// Applications and their containers, by the generations that have them.
inline constexpr std::string_view systemApps = "/Applications";
inline constexpr std::string_view userAppsBefore8_0 = "/var/mobile/Applications";
inline constexpr std::string_view userAppBundlesSince8_0 = "/var/mobile/Containers/Bundle/Application";
inline constexpr std::string_view userAppBundlesSince9_2 = "/var/containers/Bundle/Application";
inline constexpr std::string_view userAppData = "/var/mobile/Containers/Data/Application";
inline constexpr std::string_view systemAppData = "/var/containers/Data/System";
inline constexpr std::string_view userGroupData = "/var/mobile/Containers/Shared/AppGroup";
inline constexpr std::string_view systemGroupData = "/var/containers/Shared/SystemGroup";
inline constexpr std::string_view pluginData = "/var/mobile/Containers/Data/PluginKitPlugin";
/// Names a container's application, in each container.
inline constexpr std::string_view containerMetadata = ".com.apple.mobile_container_manager.metadata.plist";

// Packages.
inline constexpr std::string_view packageDatabase = "/var/lib/dpkg";
inline constexpr std::string_view packageArchives = "/var/cache/apt/archives";

} // namespace devicename
