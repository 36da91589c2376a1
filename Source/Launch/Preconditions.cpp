#include "Launch/Preconditions.h"

#include "Platform/Device.h"

#include <array>

#include <fmt/format.h>

namespace {

using Purpose = LauncherOptions::Purpose;

// Where none of these can be written, next to nothing could be removed, and no choice stored.
constexpr std::array<std::string_view, 7> writtenFolders = {
    "/",
    "/var",
    "/var/mobile",
    "/var/mobile/Library",
    "/var/mobile/Library/Preferences",
    "/var/mobile/Library/Caches",
    "/tmp",
};

std::optional<Refusal> treeThatCannotBeWritten(platform::Device& device, const LauncherOptions& options) {
    constexpr int cannotCreate = 73;
    if (options.purpose() != Purpose::change) {
        return std::nullopt;
    }
    std::optional<std::error_code> reason;
    for (const auto path : writtenFolders) {
        const auto writable = device.fileManager().checkWritableAtPath(path);
        if (writable) {
            return std::nullopt;
        }
        if (!reason) {
            reason = writable.error();
        }
    }
    return Refusal{fmt::format("nothing was done: {} cannot be written ({}); mount it for writing or run as "
                               "the user it belongs to, or look with --dry-run --log FILE -clean",
                               options.device.value_or("the device's tree"), reason->message()),
                   cannotCreate};
}

// Two that change things would overwrite each other's choices and mix one log.
std::optional<Refusal> anotherAtWork(platform::Device& device, const LauncherOptions& options) {
    const auto purpose = options.purpose();
    if (purpose != Purpose::change && purpose != Purpose::analyze && !options.resetSettings) {
        return std::nullopt;
    }
    const auto locked = device.lock();
    if (locked) {
        return std::nullopt;
    }
    if (platform::DeviceLock::meansNoLocks(locked.error())) {
        device.warnings().tell(
            fmt::format("Nothing keeps a second run from working on this device meanwhile: "
                        "its file system has no locks ({}).",
                        locked.error().message()));
        return std::nullopt;
    }
    if (locked.error() != std::errc::operation_would_block) {
        return Refusal{fmt::format("nothing was done: {} cannot be locked ({})",
                                   options.device.value_or("the device"), locked.error().message())};
    }
    const auto holder = platform::DeviceLock::describeHolder(device.fileManager().rootDescriptor());
    if (purpose == Purpose::analyze && options.logFile && device.lookOnly()) {
        device.warnings().tell(
            fmt::format("This device is in use by {}; what is told here may have changed by "
                        "its end.",
                        holder));
        return std::nullopt;
    }
    return Refusal{fmt::format("nothing was done: this device is in use by {}; wait for its end, or look "
                               "meanwhile with --dry-run --log FILE -clean",
                               holder)};
}

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
constexpr std::array<Check, 3> checks = {treeThatCannotBeWritten, anotherAtWork, settingsThatCannotBeRead};

} // namespace

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
