#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"
#include "Platform/Device/Generations.h"

// Caches outside of the applications' containers.

namespace {

using enum CleanupPrimitive;

// An advertising network's library names its cache after the host that serves the network's static content.
// An installation names its own network here.
constexpr std::string_view advertisingCacheFolder = "./static.ads.example.org";

constexpr std::string_view springBoardImages[] = {"com.apple.springboard-imagecache",
                                                  "com.apple.SpringBoard.folderSwitcherLinen"};
constexpr std::string_view webStart[] = {"http_", "https_"};
constexpr std::string_view webMiddle[] = {"google", ".admob."};
constexpr std::string_view analyticsPatterns[] = {"googleanalytics"};
// Other than in the applications' containers, all three begin with a dot.
constexpr std::string_view trackingPatterns[] = {".flurry", ".initialTimestamp", ".googleanalytics"};

constexpr CleanupAction mobileCacheActions[] = {
    {.primitive = del, .path = "./BarDialer"},
    {.primitive = del, .path = "./BarDialer_selected"},
    {.primitive = del, .path = "./BarRecents"},
    {.primitive = del, .path = "./BarRecents_selected"},
    {.primitive = del, .path = "./BarVM"},
    {.primitive = del, .path = "./BarVM_selected"},
    {.primitive = del, .path = "./Maps/MapTiles/MapTiles.sqlitedb"},
    {.primitive = del, .path = "./MapTiles/MapTiles.sqlitedb"},
    {.primitive = del, .path = "./com.apple.SpringBoard.notificationCenterLinen"},
    {.primitive = delr, .path = "./al"},
    {.primitive = delr, .path = advertisingCacheFolder},
    {.primitive = delr, .path = "./admob"},
    {.primitive = delWithPatterns,
     .path = ".",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = springBoardImages}},
    {.primitive = delWithPatterns,
     .path = ".",
     .patterns = {.startPatterns = webStart, .middlePatterns = webMiddle}},
    {.primitive = delFolderContents, .path = "./com.apple.keyboards"},
    {.primitive = delFolderContents, .path = "./com.apple.springboard.newsstand"},
    {.primitive = delFolderContents, .path = "./com.apple.springboard.sharedimagecache/Persistent"},
    {.primitive = delFolderContents, .path = "./com.apple.AppStore"},
    {.primitive = delFolderContents, .path = "./com.apple.storeservices/SSAppImageDatabaseCacheEntry"},
    {.primitive = delFolderContents, .path = "./com.apple.IconsCache"},
    {.primitive = delFolderContents, .path = "./com.apple.SiriViewService"},
    {.primitive = delFolderContents, .path = "./com.apple.UIStatusBar"},
    {.primitive = delFolderContents, .path = "./ImageCache"},
    {.primitive = delFolderContents, .path = "./sharedCaches"},
    {.primitive = delFolderContents, .path = "./SpringBoardIconCache"},
    {.primitive = delFolderContents, .path = "./SpringBoardIconCache-small"},
    {.primitive = delFolderContents, .path = "./Snapshots"},
    {.primitive = delFolderContents, .path = "./Three20"},
};

constexpr CleanupAction mobileLibraryActions[] = {
    // Newer generations keep the search index itself here.
    {.primitive = delFilesInFolderRecursive, .path = "./Spotlight", .belowFoundationVersion = ios::v10_0},
    {.primitive = delWithPattern,
     .path = ".",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = analyticsPatterns}},
    {.primitive = delFolderContents, .path = "./Keyboard/Caches"},
    {.primitive = delFolderContents, .path = "./Keyboard/Cache"},
    {.primitive = delFolderContents, .path = "./GameKit/Data"},
    {.primitive = delFolderContents, .path = "./com.apple.iTunesStore/LocalStorage"},
    {.primitive = delFolderContents, .path = "./com.apple.iTunesStore/Reviews"},
};

constexpr CleanupAction mobileActions[] = {
    {.primitive = del, .path = "./.bash_history"},
    {.primitive = delFolderContents, .path = "./Documents/admob"},
    {.primitive = delWithPatterns,
     .path = "./Documents",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = trackingPatterns}},
};

constexpr CleanupAction rootCacheActions[] = {
    {.primitive = del, .path = "./locationd/consolidated.db"},
    {.primitive = delr, .path = "./com.apple.coresymbolicationd"},
    {.primitive = delFolderContents, .path = "com.apple.UIStatusBar"},
    {.primitive = delWithPatterns,
     .path = ".",
     .patterns = {.startPatterns = webStart, .middlePatterns = webMiddle}},
};

// Reaches some files of the group before it again, for devices whose caches folder leads elsewhere.
constexpr CleanupAction rootActions[] = {
    {.primitive = del, .path = "./.bash_history"},
    {.primitive = del, .path = "./.lesshst"},
    {.primitive = del, .path = "./Library/Caches/locationd/consolidated.db"},
    {.primitive = delr, .path = "./Library/Caches/com.apple.coresymbolicationd"},
    {.primitive = delWithPatterns,
     .path = "./Library/Caches",
     .patterns = {.startPatterns = webStart, .middlePatterns = webMiddle}},
};

constexpr CleanupGroup groups[] = {
    {"/var/mobile/Library/Caches", mobileCacheActions},
    {"/var/mobile/Library", mobileLibraryActions},
    {"/var/mobile", mobileActions},
    {"/var/root/Library/Caches", rootCacheActions},
    {"/var/root", rootActions},
};

} // namespace

void cleanCacheFiles(const StepContext& context) {
    for (const auto& group : groups) {
        context.run.performInDirectory(group);
    }
}
