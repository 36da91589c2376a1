#include "Launch/Preconditions.h"

#include "Platform/Device.h"

#include <array>

#include <fmt/format.h>
#include <sys/stat.h>

namespace {

using Purpose = LauncherOptions::Purpose;

constexpr std::string_view dataFolder = "/var/mobile";
constexpr std::string_view privateDataFolder = "/private/var/mobile";

bool isSameFolder(platform::FileManager& fileManager, std::string_view one, std::string_view other) {
    const auto first = fileManager.folderAtPath(one);
    const auto second = fileManager.folderAtPath(other);
    struct stat a {};
    struct stat b {};
    return first && second && ::fstat((*first)->descriptor(), &a) == 0 &&
           ::fstat((*second)->descriptor(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Without them the stored choices and the excluded applications are unknown, and all that is known to be
// anybody's data.
std::optional<Refusal> missingData(platform::Device& device, const LauncherOptions& options) {
    const auto purpose = options.purpose();
    if (purpose == Purpose::tell || purpose == Purpose::show) {
        return std::nullopt;
    }
    auto fileManager = device.fileManager();
    const std::string tree = options.device.value_or("the device");
    if (fileManager.folderAtPath(privateDataFolder)) {
        return isSameFolder(fileManager, dataFolder, privateDataFolder)
                   ? std::nullopt
                   : std::optional(Refusal{fmt::format(
                         "in {} var is not private/var, where the device has its data; move var away, or put "
                         "a link to private/var in its place",
                         tree)});
    }
    const auto folder = fileManager.folderAtPath(dataFolder);
    if (folder) {
        return std::nullopt;
    }
    return Refusal{
        platform::meansAbsence(folder.error())
            ? fmt::format("{} has neither var/mobile nor private/var/mobile: the data partition is "
                          "missing; mount or extract it into the tree",
                          tree)
            : fmt::format("var/mobile in {} cannot be opened: {}", tree, folder.error().message())};
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
constexpr std::array checks = {Check{missingData}, Check{settingsThatCannotBeRead}};

} // namespace

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
