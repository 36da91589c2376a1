#include "Categories/Text.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Removal/KnownApps.h"
#include "Model/Core/Steps/EachApplication.h"
#include "Model/Core/Steps/StepContext.h"
#include "Platform/Device/DeviceNames.h"
#include "Platform/Files/Path.h"

#include <optional>
#include <set>

// Cydia's own leftovers, and those of the applications that came through it.

namespace {

using enum CleanupPrimitive;

constexpr std::string_view cydiaIdentifier = "com.saurik.Cydia";
constexpr std::string_view auxoSnapshots = "/var/mobile/Library/Auxo/Snapshots";
constexpr std::string_view webClips = "/var/mobile/Library/WebClips";
constexpr std::string_view webApplication = "com.apple.webapp";

constexpr std::string_view databasePatterns[] = {"Cache.db"};

constexpr CleanupAction snapshotActions[] = {
    {.primitive = delr, .path = "/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia"},
};

constexpr CleanupAction cacheActions[] = {
    {.primitive = delr, .path = "./LocalStorage"},
    {.primitive = delr, .path = "./SDURLCache"},
    {.primitive = delr, .path = "com.apple.opengl"},
    {.primitive = delr, .path = "com.apple.metal"},
    {.primitive = delr, .path = "fsCachedData"},
    {.primitive = del, .path = "ApplicationCache.db"},
    {.primitive = delWithPattern,
     .path = ".",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = databasePatterns}},
};

// Each holds one item for an application, named by its identifier.
constexpr std::string_view applicationFolders[] = {
    "/var/mobile/Library/Caches",
    "/var/root/Library/Caches",
    "/var/mobile/Library/Caches/Snapshots",
    "/var/root/Library/Caches/Snapshots",
};

constexpr CleanupAction partialFileActions[] = {
    {.primitive = delFolderContents, .path = "/var/lib/apt/lists/partial"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/Caches/com.saurik.Cydia/lists/partial"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/Caches/com.saurik.Cydia/archives/partial"},
};

// An identifier comes from whoever made the application.
bool namesAnItem(std::string_view identifier) {
    return isNotEmptyOrWhitespace(identifier) && platform::isFileName(identifier);
}

void cleanSystemApplications(const StepContext& context) {
    const auto apps = context.appList.appList(
        {.typeMask = OZAppTypeMask::system,
         .excludingIdentifiers = {std::string(devicename::programIdentifier), std::string(cydiaIdentifier)},
         .filterMask = OZAppFilterMask::noApple | OZAppFilterMask::validIcon,
         .exclusionMask = OZExclusionMask::cleanup});
    for (const auto& app : apps) {
        logNameOfApplication(context.run, *app, "\n\n");
        quitApplication(context, *app);
        if (namesAnItem(app->identifier())) {
            for (const auto folder : applicationFolders) {
                context.run.delr(CleanupRun::Paths{platform::joinPath(folder, app->identifier())});
            }
            cleanKnownApp(context.run, context.appList, app->identifier());
        }
    }
}

/// Names of the snapshots that stand for something; none where nobody can tell.
std::optional<std::set<std::string, std::less<>>> snapshotsInUse(const StepContext& context) {
    std::set<std::string, std::less<>> names{std::string(webApplication)};
    for (const auto& app : context.appList.appList({.typeMask = OZAppTypeMask::all})) {
        names.insert(app->identifier());
    }
    const auto clips = context.run.tree().contentsOfDirectoryAtPath(webClips);
    if (!clips && !platform::meansAbsence(clips.error())) {
        return std::nullopt;
    }
    for (const auto& clip : clips.value_or(CleanupRun::Paths{})) {
        names.insert(std::string(webApplication).append("-").append(platform::withoutPathExtension(clip)));
    }
    return names;
}

// Snapshots of applications that are gone. Without an inventory nobody knows which ones are.
void cleanAuxoSnapshots(const StepContext& context) {
    auto& run = context.run;
    bool isDirectory = false;
    if (!context.knowsApplications() || !run.tree().fileExistsAtPath(auxoSnapshots, &isDirectory) ||
        !isDirectory) {
        return;
    }
    run.log("\nAuxo snapshots\n--------------\n\n");
    if (!run.changeDir(auxoSnapshots)) {
        return;
    }
    const auto inUse = snapshotsInUse(context);
    auto snapshots = inUse ? run.tree().directEntries(".") : platform::failure(ENOENT);
    if (snapshots) {
        // The log names them as they stand in the directory that it has named.
        snapshots->prefix.clear();
        std::erase_if(snapshots->names, [&](const std::string& name) { return inUse->contains(name); });
        run.delr(*snapshots);
    }
}

} // namespace

void cleanCydia(const StepContext& context) {
    auto& run = context.run;
    run.quit({"MobileCydia", "Cydia"});
    run.perform(snapshotActions);
    run.performInDirectory({"/var/mobile/Library/Caches/com.saurik.Cydia", cacheActions});
    cleanSystemApplications(context);
    cleanAuxoSnapshots(context);
    run.log("\nAPT partial files\n-----------------\n\n");
    run.perform(partialFileActions);
}
