#pragma once

#include "Model/Apps/InfoPlist.h"
#include "Platform/Formats/PropertyList.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class Device;
} // namespace platform

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
