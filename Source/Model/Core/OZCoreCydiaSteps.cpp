#include "Categories/NSStringAdditions.h"
#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupAction.h"
#include "Model/Core/OZCoreRun.h"
#include "Model/Core/ProgramIdentity.h"
#include "Model/Tasks/OZTaskManager.h"
#include "Platform/PathExtension.h"

#include <set>

// Cydia's own leftovers, those of the applications that came through it, and its package source lists.

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

constexpr CleanupAction sourceActions[] = {
    {.primitive = delFolderContents, .path = "/var/lib/apt/lists", .onlyFiles = OnlyFiles::yes},
    {.primitive = delFolderContents,
     .path = "/var/mobile/Library/Caches/com.saurik.Cydia/lists",
     .onlyFiles = OnlyFiles::yes},
};

// An identifier comes from whoever made the application: it must name an item of the folder and lead nowhere
// else.
bool namesAnItem(std::string_view identifier) {
    return isNotEmptyOrWhitespace(identifier) && !identifier.contains('/') && identifier != "." &&
           identifier != "..";
}

} // namespace

void OZCore::cleanCydia(const Run& run) {
    OZTaskManager::killTasksWithNames(_device, {"MobileCydia", "Cydia"});
    perform(snapshotActions);
    performInDirectory({"/var/mobile/Library/Caches/com.saurik.Cydia", cacheActions});
    cleanSystemApplications(run);
    cleanAuxoSnapshots();
    log("\nAPT partial files\n-----------------\n\n");
    perform(partialFileActions);
}

void OZCore::cleanSystemApplications(const Run& run) {
    const auto apps = _appList.appList(
        {.typeMask = OZAppTypeMask::system,
         .excludingIdentifiers = {std::string(programIdentifier), std::string(cydiaIdentifier)},
         .filterMask = OZAppFilterMask::noApple | OZAppFilterMask::validIcon,
         .exclusionMask = OZExclusionMask::cleanup});
    for (const auto& app : apps) {
        logNameOfApplication(*app, "\n\n");
        quitApplication(*app, run);
        if (namesAnItem(app->identifier())) {
            for (const auto folder : applicationFolders) {
                delr(Paths{platform::joinPath(folder, app->identifier())});
            }
            cleanKnownApp(app->identifier());
        }
    }
}

// Snapshots of applications that are gone. Without an inventory nobody knows which ones are.
void OZCore::cleanAuxoSnapshots() {
    bool isDirectory = false;
    if (!knowsApplications() || !fileExistsAtPath(auxoSnapshots, &isDirectory) || !isDirectory) {
        return;
    }
    log("\nAuxo snapshots\n--------------\n\n");
    if (!changeDir(auxoSnapshots)) {
        return;
    }
    std::set<std::string, std::less<>> names{std::string(webApplication)};
    for (const auto& app : _appList.appList({.typeMask = OZAppTypeMask::all})) {
        names.insert(app->identifier());
    }
    const auto clips = contentsOfDirectoryAtPath(webClips);
    if (!clips && !platform::meansAbsence(clips.error())) {
        return;
    }
    for (const auto& clip : clips.value_or(Paths{})) {
        names.insert(std::string(webApplication).append("-").append(platform::withoutPathExtension(clip)));
    }
    auto snapshots = folderAtPath(".");
    auto entries = snapshots ? (*snapshots)->entries() : platform::failure(ENOENT);
    if (entries) {
        std::erase_if(*entries, [&](const std::string& name) { return names.contains(name); });
        delr(platform::FoundPaths{.folder = *snapshots, .prefix = "", .names = std::move(*entries)});
    }
}

void OZCore::cleanCydiaSources(const Run& /*run*/) {
    perform(sourceActions);
}
