#include "Model/Core/Removal/KnownApps.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupRun.h"

#include <algorithm>

// What well-known applications leave behind beside the caches that all have. Paths are relative to the data
// container of a user application. The log shows the actions in the order of the rows.

namespace {

using platform::PropertyListFormat;

// Rows of the tables.
consteval CleanupAction contents(std::string_view folder) {
    return {.primitive = CleanupPrimitive::delFolderContents, .path = folder};
}

consteval CleanupAction file(std::string_view path) {
    return {.primitive = CleanupPrimitive::del, .path = path};
}

consteval CleanupAction filesStartingWith(std::span<const std::string_view> patterns,
                                          std::string_view folder) {
    return {.primitive = CleanupPrimitive::delWithPatterns,
            .path = folder,
            .onlyFiles = OnlyFiles::yes,
            .patterns = {.startPatterns = patterns}};
}

consteval CleanupAction filesEndingIn(std::span<const std::string_view> pattern, std::string_view folder) {
    return {.primitive = CleanupPrimitive::delWithPattern,
            .path = folder,
            .onlyFiles = OnlyFiles::yes,
            .patterns = {.endPatterns = pattern}};
}

constexpr CleanupAction cookies[] = {contents("./Library/Cookies")};

constexpr CleanupAction badoo[] = {contents("./Documents/Logs")};

constexpr CleanupAction box[] = {contents("./Library/Cachesfs"), contents("./Documents/PendingUploads")};

constexpr std::string_view chromeHistory[] = {"Histor", "Top Site"};
constexpr CleanupAction chrome[] = {
    file("./Library/Application Support/Google/Chrome/Default/Current Tabs"),
    file("./Library/Application Support/Google/Chrome/Default/Last Tabs"),
    file("./Library/Application Support/Google/Chrome/Default/UIWebViewCookies"),
    file("./Library/Application Support/Google/Chrome/Default/session.plist"),
    filesStartingWith(chromeHistory, "./Library/Application Support/Google/Chrome/Default"),
    contents("./Library/Cookies"),
    contents("./Library/Application Support/Google/Chrome/Default/OTR"),
    contents("./Library/Application Support/Google/Chrome/Default/LocalStorage"),
};

constexpr CleanupAction dolphin[] = {
    contents("./Library/Cookies"),    contents("./Documents/Downloads/temp"),
    contents("./Library/ImageCache"), contents("./Library/SNAPSHOT_FOLDER"),
    file("./Library/tabs.archive"),
};

constexpr CleanupAction downloads[] = {
    file("./Library/BrowserState.plist"),
    file("./Library/History.plist"),
    contents("./Library/Cookies"),
};

constexpr CleanupAction facebook[] = {
    contents("./Library/Cookies"),
    contents("./Library/Application Support/com.facebook.Facebook/videoads"),
};

constexpr CleanupAction facebookPages[] = {contents("./Documents/Backups")};

constexpr CleanupAction filza[] = {contents("/var/mobile/Library/Filza/.Trash")};

constexpr CleanupAction flipboard[] = {
    contents("./Documents/Logs"),
    contents("./Documents/IssueReports"),
    contents("./Library/YouTube"),
};

constexpr CleanupAction googleSearch[] = {
    file("./Library/GoogleMobile/searchhistory.db"),
    contents("./Library/GoogleMobile/SearchHistoryImages"),
};

constexpr CleanupAction googleMaps[] = {
    file("./Library/Application Support/Objects.sqlite"),
    file("./Library/Application Support/ServerControlledParams"),
    file("./Library/Application Support/StreetView.sqlite"),
    file("./Library/Application Support/Tiles.sqlite"),
};

constexpr std::string_view googlePlusUploads[] = {"MediaUploader"};
constexpr std::string_view googlePlusLogs[] = {"gplus-log-"};
constexpr CleanupAction googlePlus[] = {
    file("./Documents/AvatarView.sqlite"),
    file("./Documents/MediaFileCache.sqlite"),
    file("./Documents/Model.sqlite"),
    file("./Documents/NetImageView.sqlite"),
    filesStartingWith(googlePlusUploads, "./Documents"),
    filesStartingWith(googlePlusLogs, "."),
};

constexpr CleanupAction iCab[] = {
    file("./Documents/.iCabMobileFiles.private/AllCookies"),
    file("./Documents/.iCabMobileFiles.private/History"),
    file("./Documents/.iCabMobileFiles.private/TabsHistory"),
    contents("./Library/Cookies"),
    contents("./Documents/.iCabMobileFiles.private/QuickStarter"),
    contents("./Documents/.iCabMobileFiles.private/TabsRestore"),
};

constexpr CleanupAction iFile[] = {
    contents("/var/mobile/Library/iFile/Trash"),
    contents("/var/mobile/Library/iFile/Cache"),
};

constexpr std::string_view instagramUploads[] = {".coded"};
constexpr CleanupAction instagram[] = {filesEndingIn(instagramUploads, "./Documents")};

constexpr CleanupAction mercury[] = {
    contents("./Library/Cookies"),
    contents("./Library/Mercury/cache"),
    contents("./Library/Mercury/websiteimages"),
};

constexpr CleanupAction skyfire[] = {
    file("./Documents/History.plist"),      file("./Documents/SiteMessageTracker.archive"),
    file("./Documents/TabbedView.archive"), file("./Documents/urlOnPasteboard.archive"),
    contents("./Library/Cookies"),
};

constexpr CleanupAction snapseed[] = {contents("./Library/Snapseed SessionData")};

constexpr CleanupAction soundCloud[] = {contents("./Documents/recordings")};

constexpr CleanupAction soundHound[] = {
    file("./Library/savedState.plist"), file("./Library/searches"),    file("./Library/visited"),
    contents("./Library/query_audio"),  contents("./Library/YouTube"),
};

constexpr CleanupAction sparrow[] = {
    file("./Library/Application Support/Sparrow/crash-sent.plist"),
    contents("./Library/Application Support/Sparrow/Cache"),
};

constexpr CleanupAction spotify[] = {
    file("./Library/Application Support/loading.png"),
    contents("./Library/Logs"),
};

constexpr CleanupAction twitter[] = {
    contents("./Documents/com.atebits.tweetie.application-state"),
    contents("./Documents/com.atebits.tweetie.application-important-state"),
    contents("./Documents/com.atebits.tweetie.compose.attachments"),
    contents("./Library/Cookies"),
};

constexpr CleanupAction wikipedia[] = {
    contents("./Library/Backups"),
    contents("./Library/Databases"),
    contents("./Library/LocalStorage"),
};

// What no row can say. None of it looks at the mode.

struct Target {
    CleanupRun& run;
    const OZApp& app;
};

// Makes the application forget about uploads that it can no longer find.
void forgetBoxUploads(const Target& target) {
    constexpr std::string_view path = "Library/Preferences/net.box.BoxNet.plist";
    constexpr mode_t ownerOnly = 0600;
    constexpr uid_t mobile = 501;
    const auto bytes = target.run.tree().contentsAtPath(path);
    auto preferences = bytes ? platform::parsePropertyList(*bytes) : std::unexpected(bytes.error());
    auto* keys = preferences ? preferences->as<platform::Dictionary>() : nullptr;
    if (keys == nullptr) {
        return;
    }
    for (const char* key : {"jobCollectionRepositoryLastSchemaNb", "jobRepositoryLastSchemaNb",
                            "jobTaskRepositoryLastSchemaNb"}) {
        keys->erase(key);
    }
    const auto format = bytes->starts_with("bplist") ? PropertyListFormat::binary : PropertyListFormat::xml;
    // Written even if nothing is forgotten, and with its owner and mode from the start: both are then those
    // of a new file, never of another name's or of what somebody puts there meanwhile.
    const auto content = platform::serializePropertyList(*preferences, format);
    target.run.writeContents(path, content, {.owner = mobile, .group = mobile, .permissions = ownerOnly});
}

void removeICaughtULogs(const Target& target) {
    const auto& bundle = target.app.bundlePath();
    target.run.del(CleanupRun::Paths{platform::joinPath(bundle, "log.txt")});
    target.run.delWithPattern(bundle, ".dat", std::nullopt, std::nullopt, OnlyFiles::yes);
}

void quitIFile(const Target& target) {
    target.run.quit({"iFile_", "iFile2", "iFile3", "iFile4"});
}

struct KnownApp {
    std::string_view identifier;
    std::span<const CleanupAction> actions{};
    /// The rule counts for an application of this type alone.
    OZAppType type = OZAppType::user;
    void (*before)(const Target&) = nullptr;
    void (*after)(const Target&) = nullptr;
};

constexpr KnownApp knownApps[] = {
    {.identifier = "com.trautvetter.atomicbrowser", .actions = cookies},
    {.identifier = "com.badoo.Badoo", .actions = badoo},
    {.identifier = "net.box.BoxNet", .actions = box, .after = forgetBoxUploads},
    {.identifier = "com.google.chrome.ios", .actions = chrome},
    {.identifier = "com.dolphin.browser", .actions = dolphin},
    {.identifier = "com.hianzinjong.Downloads", .actions = downloads},
    {.identifier = "com.hianzinjong.Downloads-Lite", .actions = downloads},
    {.identifier = "com.facebook.Facebook", .actions = facebook},
    {.identifier = "com.facebook.Messenger", .actions = cookies},
    {.identifier = "com.facebook.PageAdminApp", .actions = facebookPages},
    {.identifier = "com.tigisoftware.Filza", .actions = filza, .type = OZAppType::system},
    {.identifier = "com.flipboard.flipboard", .actions = flipboard},
    {.identifier = "com.google.GoogleMobile", .actions = googleSearch},
    {.identifier = "com.google.Maps", .actions = googleMaps},
    {.identifier = "com.google.GooglePlus", .actions = googlePlus},
    {.identifier = "de.icab.iCabMobile", .actions = iCab},
    {.identifier = "com.itaysoft.icaughtuproapp", .type = OZAppType::system, .after = removeICaughtULogs},
    {.identifier = "eu.heinelt.ifile", .actions = iFile, .type = OZAppType::system, .before = quitIFile},
    {.identifier = "com.burbn.instagram", .actions = instagram},
    {.identifier = "com.ilegendsoft.MBrowser", .actions = mercury},
    {.identifier = "com.ilegendsoft.MBrowserPro", .actions = mercury},
    {.identifier = "com.skyfire.browser", .actions = skyfire},
    {.identifier = "com.niksoftware.snapseedforipad", .actions = snapseed},
    {.identifier = "com.soundcloud.TouchApp", .actions = soundCloud},
    {.identifier = "com.melodis.midomi", .actions = soundHound},
    {.identifier = "com.melodis.soundhound.free", .actions = soundHound},
    {.identifier = "com.sparrowmailapp.iphoneapp", .actions = sparrow},
    {.identifier = "com.spotify.client", .actions = spotify},
    {.identifier = "com.atebits.Tweetie2", .actions = twitter},
    {.identifier = "org.wikimedia.wikipedia", .actions = wikipedia},
};
static_assert(std::size(knownApps) == 30);

} // namespace

void cleanKnownApp(CleanupRun& run, const OZAppList& appList, std::string_view identifier) {
    const auto app = appList.appWithIdentifier(identifier);
    const auto* known = std::ranges::find(knownApps, identifier, &KnownApp::identifier);
    if (!app || known == std::end(knownApps)) {
        return;
    }
    const auto& container = app->dataContainer();
    if (app->type() == OZAppType::user && !(container && run.changeDir(*container))) {
        return;
    }
    if (app->type() != known->type) {
        return;
    }
    const Target target{.run = run, .app = *app};
    if (known->before != nullptr) {
        known->before(target);
    }
    run.perform(known->actions);
    if (known->after != nullptr) {
        known->after(target);
    }
}
