#include "Launch/Preconditions.h"

#include "Platform/Device.h"

#include <array>

#include <fmt/format.h>

namespace {

using Purpose = LauncherOptions::Purpose;

std::optional<Refusal> resetSettings(platform::Device& device, std::string_view reason) {
    auto& settings = device.standardUserDefaults();
    const auto kept = settings.reset();
    if (!kept) {
        return Refusal{fmt::format("nothing was done: the settings in {} cannot be read ({}) and cannot be "
                                   "put aside ({}); put that right on the device",
                                   settings.path(), reason, kept.error())};
    }
    device.warnings().tell(fmt::format("The settings in {} could not be read ({}); they were kept as {}. The "
                                       "defaults serve.",
                                       settings.path(), reason, *kept));
    return std::nullopt;
}

// By the defaults a test run would be a cleanup, and what the user has excluded would go.
std::optional<Refusal> settingsThatCannotBeRead(platform::Device& device, const LauncherOptions& options) {
    const auto purpose = options.purpose();
    if (purpose != Purpose::change && purpose != Purpose::analyze && !options.resetSettings) {
        return std::nullopt;
    }
    auto& settings = device.standardUserDefaults();
    const auto loaded = settings.load();
    if (!loaded && options.resetSettings) {
        return resetSettings(device, loaded.error());
    }
    if (!loaded) {
        return Refusal{fmt::format("nothing was done: the settings in {} cannot be read ({}); repair the "
                                   "file, or use --reset-settings, which keeps it under another name and "
                                   "goes on with the defaults",
                                   settings.path(), loaded.error())};
    }
    if (options.resetSettings) {
        device.warnings().tell(
            fmt::format("The settings in {} are in order; there is nothing to reset.", settings.path()));
    }
    return std::nullopt;
}

using Check = std::optional<Refusal> (*)(platform::Device& device, const LauncherOptions& options);

// In the order in which they are looked at.
constexpr std::array<Check, 1> checks = {settingsThatCannotBeRead};

} // namespace

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
