#pragma once

#include "Platform/Formats/PropertyList.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class Device;
class FileManager;
} // namespace platform

/// Keys of an info dictionary, in which loaders describe an installed application.
namespace infokey {
inline constexpr std::string_view path = "Path";
inline constexpr std::string_view executable = "CFBundleExecutable";
inline constexpr std::string_view identifier = "CFBundleIdentifier";
inline constexpr std::string_view displayName = "CFBundleDisplayName";
inline constexpr std::string_view name = "CFBundleName";
inline constexpr std::string_view bundleContainer = "BundleContainer";
inline constexpr std::string_view container = "Container";
/// Dictionaries from identifier to path.
inline constexpr std::string_view groupDataContainers = "GroupDataContainers";
inline constexpr std::string_view pluginDataContainers = "PluginDataContainers";
/// "User" or "System"; only in a device's own list of its applications.
inline constexpr std::string_view applicationType = "ApplicationType";
} // namespace infokey

/// What a loader gives: info dictionaries by identifier.
struct InstalledApps {
    using InfoDictionaries = std::map<std::string, platform::Dictionary, std::less<>>;

    InfoDictionaries systemAppInfo;
    InfoDictionaries userAppInfo;
    /// False where something could not be looked at for now: there may be more applications, or theirs may be
    /// more. What is there and is no application's, or nothing that can be read at all, does not count.
    bool isComplete = true;
    /// Whether something that should say whose it is does not: it may be an application's that is not here.
    bool hasNameless = false;

    /// Takes an error of looking at something into account.
    void noteError(const std::error_code& error);
};

/// The applications of a device's own list; entries that lack a type or a needed key are passed over.
[[nodiscard]] InstalledApps listedApps(const platform::Array& applications);

/// A bundle's Info.plist.
[[nodiscard]] platform::Result<platform::Dictionary> readInfoPlist(platform::FileManager& fileManager,
                                                                   std::string_view bundlePath);
/// A property list of at most `limit` bytes with a dictionary at its top; anything else is an error
/// (`std::errc::illegal_byte_sequence`).
[[nodiscard]] platform::Result<platform::Dictionary> readDictionary(platform::FileManager& fileManager,
                                                                    std::string_view path, uint64_t limit);
/// The info dictionary of a bundle with this Info.plist; none without a textual identifier. Only what a
/// bundle may tell of itself is taken over: where its containers are is never its own to say.
[[nodiscard]] std::optional<platform::Dictionary>
infoDictionaryOfBundle(const platform::Dictionary& infoPlist, std::string_view bundlePath);
