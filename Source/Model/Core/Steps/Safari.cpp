#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// What the browser keeps: in the folders that older generations share, and in its container on newer ones.

namespace {

using enum CleanupPrimitive;

constexpr std::string_view databasePatterns[] = {"Cache.db-"};
constexpr std::string_view historyPatterns[] = {"History."};

constexpr CleanupAction sharedFolderActions[] = {
    {.primitive = del, .path = "/var/mobile/Library/Safari/History.plist"},
    {.primitive = del, .path = "/var/mobile/Library/Safari/SuspendState.plist"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/Caches/Safari"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/Caches/com.apple.WebAppCache"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/WebKit/Cookies"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/WebKit/Databases"},
    {.primitive = delFolderContents, .path = "/var/mobile/Library/WebKit/LocalStorage"},
    {.primitive = delFolderContents, .path = "/var/root/Library/WebKit/LocalStorage"},
};

constexpr CleanupAction cacheActions[] = {
    {.primitive = del, .path = "./Cache.db"},
    {.primitive = del, .path = "./RecentSearches.plist"},
    {.primitive = delFolderContents, .path = "./Thumbnails"},
    {.primitive = delWithPattern,
     .path = ".",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = databasePatterns}},
};

constexpr CleanupAction containerActions[] = {
    {.primitive = delFolderContents, .path = "./Library/Caches"},
    {.primitive = delFolderContents, .path = "./tmp"},
    {.primitive = delFolderContents, .path = "./Library/Safari/Thumbnails", .onlyFiles = OnlyFiles::yes},
    {.primitive = delFolderContents, .path = "./Library/WebKit/LocalStorage"},
    {.primitive = delFolderContents, .path = "./Library/WebKit/WebsiteData"},
    {.primitive = del, .path = "./Library/Safari/RecentSearches.plist"},
    {.primitive = del, .path = "./Library/Safari/SuspendState.plist"},
    {.primitive = delWithPattern,
     .path = "./Library/Safari",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = historyPatterns}},
};

} // namespace

void cleanSafari(const StepContext& context) {
    auto& run = context.run;
    // The browser would write back what it has open.
    run.quitUnlessAnalyzing("MobileSafari");
    run.perform(sharedFolderActions);
    run.performInDirectory({"/var/mobile/Library/Caches/com.apple.mobilesafari", cacheActions});
    const auto safari = context.appList.appWithIdentifier("com.apple.mobilesafari");
    if (safari && safari->dataContainer()) {
        run.performInDirectory({*safari->dataContainer(), containerActions});
    }
}
