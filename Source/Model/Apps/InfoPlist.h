#pragma once

#include "Platform/Files/Error.h"
#include "Platform/Formats/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class FileManager;
} // namespace platform

// What bundles tell of themselves in their Info.plist, and what is refused of it.

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

namespace infoplist {

/// A text that an info dictionary holds at a key; none for an empty one.
[[nodiscard]] std::optional<std::string> textAt(const platform::Dictionary& info, std::string_view key);
/// An absolute path at a key, without "/" at its end; none for any other.
[[nodiscard]] std::optional<std::string> pathAt(const platform::Dictionary& info, std::string_view key);
/// The application's identifier; none for one that is no name. It comes from a file that the application
/// brings along, and becomes a name below containers.
[[nodiscard]] std::optional<std::string> identifierAt(const platform::Dictionary& info);

} // namespace infoplist
