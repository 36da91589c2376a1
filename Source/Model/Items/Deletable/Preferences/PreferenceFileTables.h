#pragma once

#include "Platform/Device/DeviceNames.h"

#include <string_view>

// What is known of preference files.

inline constexpr std::string_view preferenceFolders[] = {
    devicename::mobilePreferences,
    "/var/root/Library/Preferences",
};

struct KnownPreferenceFile {
    std::string_view fileName;
    std::string_view packageIdentifier;
};

/// Files whose names do not follow their packages'.
inline constexpr KnownPreferenceFile knownPreferenceFileTable[] = {
    {"com.flipswitch.autolock.plist", "com.a3tweaks.flipswitch"},
    {"com.anemoneteam.anemone.plist", "com.anemonetheming.anemone"},
    {"com.anemoneteam.anemoneordering.plist", "com.anemonetheming.anemone"},
    {"jp.ashikase.crashreporter.scanner.plist", "crash-reporter"},
    {"com.saurik.WinterBoard.plist", "winterboard"},
    {"com.rbt.batteryLife.plist", "com.rbt.batterylife"},
};

/// Files of the platform that do not say so in their names.
inline constexpr std::string_view excludedPreferenceFileTable[] = {
    ".GlobalPreferences.plist",
    "${PRODUCT_NAME}.plist",
    "addaily.plist",
    "DownloadsCache.plist",
    "DTPower.plist",
    "kbd.plist",
    "mediaremoted.plist",
    "nfcd.plist",
    "RadioSyncOverridePlaybackTimeoutDictionary.plist",
    "SafariCloudHistoryPushAgent.plist",
    "UITextInputContextIdentifiers.plist",
};
