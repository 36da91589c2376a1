#include "Launch/Preconditions.h"

#include "Platform/Device/Device.h"
#include "Platform/Device/DeviceNames.h"

#include <array>

#include <fmt/format.h>
#include <sys/stat.h>

namespace {

using Purpose = LauncherOptions::Purpose;

// What a person says of another device would choose the wrong rules.
std::optional<Refusal> contradictingVersion(platform::Device& device, const LauncherOptions& options) {
    const std::string& given = options.given.systemVersion;
    const std::string& told = device.facts().systemVersion;
    const auto version = platform::versionNumbers(told);
    if (given.empty() || !version || version == platform::versionNumbers(given)) {
        return std::nullopt;
    }
    return Refusal{
        fmt::format("the device tells iOS {} as its version, and --ios says {}; leave --ios out, or "
                    "name the right device",
                    told, given)};
}

// Nothing but a real name tells what a device needs: an iPad by any other name would count as none.
std::optional<Refusal> wrongModel(platform::Device& device, const LauncherOptions& options) {
    const std::string& given = options.given.hardwareModel;
    const std::string& told = device.facts().hardwareModel;
    if (given.empty()) {
        return std::nullopt;
    }
    if (!platform::isHardwareModel(given)) {
        return Refusal{
            fmt::format("{} is no hardware model; name one as the device tells it, such as iPhone7,2 "
                        "or iPad5,4",
                        given)};
    }
    return told == given
               ? std::nullopt
               : std::optional(Refusal{fmt::format(
                     "Device.plist tells {} as the device's model, and --model says {}; leave --model "
                     "out, or mend Device.plist",
                     told, given)});
}

bool isSameFolder(platform::FileManager& fileManager, std::string_view one, std::string_view other) {
    const auto first = fileManager.folderAtPath(one);
    const auto second = fileManager.folderAtPath(other);
    struct stat a = {};
    struct stat b = {};
    return first && second && ::fstat((*first)->descriptor(), &a) == 0 &&
           ::fstat((*second)->descriptor(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The stored choices and what belongs to applications are there: without it a run would go by the defaults,
// and take for nobody's what is somebody's.
std::optional<Refusal> missingData(platform::Device& device, const LauncherOptions& options) {
    const auto purpose = options.purpose();
    if (purpose == Purpose::tell) {
        return std::nullopt;
    }
    auto fileManager = device.fileManager();
    const std::string tree = options.device.value_or("the device");
    const auto folder = fileManager.folderAtPath(devicename::mobileHome);
    if (!folder && folder.error() == std::errc::operation_not_permitted) {
        return Refusal{
            fmt::format("a link on the way to var/mobile in {} belongs to another user than what it "
                        "leads to, and is not followed; give both to one user, with chown -h",
                        tree)};
    }
    if (fileManager.folderAtPath(devicename::privateMobileHome)) {
        return isSameFolder(fileManager, devicename::mobileHome, devicename::privateMobileHome)
                   ? std::nullopt
                   : std::optional(Refusal{fmt::format(
                         "in {} var is not private/var, where the device has its data; move var away, or put "
                         "a link to private/var in its place",
                         tree)});
    }
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

// Where none of these can be written, next to nothing could be removed, and no choice stored.
constexpr std::array<std::string_view, 7> writtenFolders = {
    "/",
    "/var",
    devicename::mobileHome,
    "/var/mobile/Library",
    devicename::mobilePreferences,
    "/var/mobile/Library/Caches",
    "/tmp",
};

// The window may look at such a tree.
std::optional<Refusal> changeThatCannotBeWritten(platform::Device& device, const LauncherOptions& options) {
    return options.purpose() == Purpose::change ? treeThatCannotBeWritten(device, options) : std::nullopt;
}

// Two that change things would overwrite each other's choices and mix one log.
std::optional<Refusal> anotherAtWork(platform::Device& device, const LauncherOptions& options) {
    const auto purpose = options.purpose();
    if (purpose == Purpose::tell && !options.resetSettings) {
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
    if (purpose == Purpose::tell && !options.resetSettings) {
        return std::nullopt;
    }
    auto& settings = device.standardUserDefaults();
    const auto loaded = settings.load();
    if (!loaded && options.resetSettings) {
        return resetSettings(device, loaded.error());
    }
    if (!loaded) {
        return Refusal{.message =
                           fmt::format("nothing was done: the settings in {} cannot be read ({}); repair the "
                                       "file, or use --reset-settings, which keeps it under another name and "
                                       "goes on with the defaults",
                                       settings.path(), loaded.error()),
                       .settingsAreDamaged = true};
    }
    const auto file = device.fileManager().attributesOfTargetAtPath(settings.path());
    if (file && file->size == 0) {
        // A copy onto a full disk leaves such a file, too.
        device.warnings().tell(
            fmt::format("The settings in {} are empty; the defaults serve.", settings.path()));
    } else if (options.resetSettings) {
        device.warnings().tell(
            fmt::format("The settings in {} are in order; there is nothing to reset.", settings.path()));
    }
    return std::nullopt;
}

// Other switches have no run to write of.
std::optional<Refusal> logWithoutCleanup(platform::Device& /*device*/, const LauncherOptions& options) {
    const bool cleans = options.vector.size() > 1 && options.vector[1] == "-clean";
    return options.logFile && !cleans
               ? std::optional(Refusal{.message = "--log is for -clean alone; take it away, or name -clean"})
               : std::nullopt;
}

using Check = std::optional<Refusal> (*)(platform::Device& device, const LauncherOptions& options);

// In the order in which they are looked at.
constexpr std::array checks = {Check{logWithoutCleanup},
                               Check{contradictingVersion},
                               Check{wrongModel},
                               Check{missingData},
                               Check{changeThatCannotBeWritten},
                               Check{anotherAtWork},
                               Check{settingsThatCannotBeRead}};

} // namespace

std::optional<Refusal> treeThatCannotBeWritten(platform::Device& device, const LauncherOptions& options) {
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
                   exitstatus::cannotWrite};
}

void warnBeforeRun(platform::Device& device, const LauncherOptions& options) {
    constexpr unsigned newestKnown = 11;
    const std::string& told = device.facts().systemVersion;
    const auto version = platform::versionNumbers(told);
    // Its output is for scripts, which take whatever comes.
    const bool isForScripts = options.vector.size() > 1 && options.vector[1] == "-printsettings";
    if (version && version->front() > newestKnown && !isForScripts) {
        device.warnings().tell(
            fmt::format("ozvarine: the device has iOS {}, which is newer than {}, the newest "
                        "that this program knows; it goes on as on iOS {}",
                        told, newestKnown, newestKnown));
    }
}

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
