#include "KnownApplications.h"

namespace ozdevice {
namespace {

constexpr TreeEntry atomicWebData[] = {
    {"/Library/Cookies/session.db"},
};

constexpr TreeEntry badooData[] = {
    {"/Documents/Logs/today.txt"},
    {"/Documents/profile.db"},
};

constexpr TreeEntry boxData[] = {
    {"/Library/Cachesfs/item.bin"},
    {"/Documents/PendingUploads/photo.jpg"},
    {"/Documents/Kept/photo.jpg"},
};

constexpr TreeEntry chromeData[] = {
    {"/Library/Application Support/Google/Chrome/Default/Current Tabs"},
    {"/Library/Application Support/Google/Chrome/Default/Last Tabs"},
    {"/Library/Application Support/Google/Chrome/Default/UIWebViewCookies"},
    {"/Library/Application Support/Google/Chrome/Default/session.plist"},
    {"/Library/Application Support/Google/Chrome/Default/History"},
    {"/Library/Application Support/Google/Chrome/Default/History-journal"},
    {"/Library/Application Support/Google/Chrome/Default/Top Sites"},
    {"/Library/Application Support/Google/Chrome/Default/Top Sites-journal"},
    {"/Library/Application Support/Google/Chrome/Default/OTR/Cookies"},
    {"/Library/Application Support/Google/Chrome/Default/LocalStorage/a.localstorage"},
    {"/Library/Application Support/Google/Chrome/Default/Bookmarks"},
    {"/Library/Application Support/Google/Chrome/Default/Preferences"},
};

constexpr TreeEntry dolphinData[] = {
    {"/Documents/Downloads/temp/part"}, {"/Documents/Downloads/finished.pdf"},
    {"/Library/ImageCache/a.png"},      {"/Library/SNAPSHOT_FOLDER/a.png"},
    {"/Library/tabs.archive"},
};

constexpr TreeEntry downloadsData[] = {
    {"/Library/BrowserState.plist"},
    {"/Library/History.plist"},
    {"/Library/Bookmarks.plist"},
};

constexpr TreeEntry facebookData[] = {
    {"/Library/Application Support/com.facebook.Facebook/videoads/ad.mp4"},
    {"/Library/Application Support/com.facebook.Facebook/store.db"},
};

constexpr TreeEntry messengerData[] = {
    {"/Library/Cookies/extra.db"},
    {"/Documents/drafts.db"},
};

constexpr TreeEntry pagesData[] = {
    {"/Documents/Backups/1.zip"},
    {"/Documents/pages.db"},
};

constexpr TreeEntry flipboardData[] = {
    {"/Documents/Logs/1.txt"},
    {"/Documents/IssueReports/1.txt"},
    {"/Library/YouTube/1.mp4"},
    {"/Documents/magazine.db"},
};

constexpr TreeEntry searchData[] = {
    {"/Library/GoogleMobile/searchhistory.db"},
    {"/Library/GoogleMobile/SearchHistoryImages/1.png"},
    {"/Library/GoogleMobile/account.db"},
};

constexpr TreeEntry gMapsData[] = {
    {"/Library/Application Support/Objects.sqlite"},
    {"/Library/Application Support/ServerControlledParams"},
    {"/Library/Application Support/StreetView.sqlite"},
    {"/Library/Application Support/Tiles.sqlite"},
    {"/Library/Application Support/Places.sqlite"},
};

constexpr TreeEntry gPlusData[] = {
    {"/Documents/AvatarView.sqlite"},
    {"/Documents/MediaFileCache.sqlite"},
    {"/Documents/Model.sqlite"},
    {"/Documents/NetImageView.sqlite"},
    {"/Documents/MediaUploader.sqlite"},
    {"/Documents/Account.sqlite"},
    {"/gplus-log-1.txt"},
};

constexpr TreeEntry iCabData[] = {
    {"/Documents/.iCabMobileFiles.private/AllCookies"},
    {"/Documents/.iCabMobileFiles.private/History"},
    {"/Documents/.iCabMobileFiles.private/TabsHistory"},
    {"/Documents/.iCabMobileFiles.private/QuickStarter/1.png"},
    {"/Documents/.iCabMobileFiles.private/TabsRestore/1"},
    {"/Documents/.iCabMobileFiles.private/Bookmarks"},
};

constexpr TreeEntry instagramData[] = {
    {"/Documents/feed.coded"},
    {"/Documents/users.coded"},
    {"/Documents/coded.txt"},
};

constexpr TreeEntry mercuryData[] = {
    {"/Library/Mercury/cache/a"},
    {"/Library/Mercury/websiteimages/a.png"},
    {"/Library/Mercury/bookmarks.db"},
};

constexpr TreeEntry skyfireData[] = {
    {"/Documents/History.plist"},      {"/Documents/SiteMessageTracker.archive"},
    {"/Documents/TabbedView.archive"}, {"/Documents/urlOnPasteboard.archive"},
    {"/Documents/Bookmarks.plist"},
};

constexpr TreeEntry snapseedData[] = {
    {"/Library/Snapseed SessionData/step1.jpg"},
    {"/Library/Snapseed Looks/look.plist"},
};

constexpr TreeEntry soundCloudData[] = {
    {"/Documents/recordings/1.m4a"},
    {"/Documents/likes.db"},
};

constexpr TreeEntry soundHoundData[] = {
    {"/Library/savedState.plist"},  {"/Library/searches"},      {"/Library/visited"},
    {"/Library/query_audio/1.caf"}, {"/Library/YouTube/1.mp4"}, {"/Library/favorites"},
};

constexpr TreeEntry sparrowData[] = {
    {"/Library/Application Support/Sparrow/crash-sent.plist"},
    {"/Library/Application Support/Sparrow/Cache/1"},
    {"/Library/Application Support/Sparrow/mail.db"},
};

constexpr TreeEntry spotifyData[] = {
    {"/Library/Application Support/loading.png"},
    {"/Library/Logs/player.txt"},
    {"/Library/Application Support/offline.bnk"},
};

constexpr TreeEntry twitterData[] = {
    {"/Documents/com.atebits.tweetie.application-state/app.db"},
    {"/Documents/com.atebits.tweetie.application-important-state/app.db"},
    {"/Documents/com.atebits.tweetie.compose.attachments/1.jpg"},
    {"/Documents/accounts.db"},
};

constexpr TreeEntry wikipediaData[] = {
    {"/Library/Backups/1"},
    {"/Library/Databases/Databases.db"},
    {"/Library/LocalStorage/a.localstorage"},
    {"/Library/saved.db"},
};

constexpr std::string_view boxPreferences[] = {"jobCollectionRepositoryLastSchemaNb",
                                               "jobRepositoryLastSchemaNb", "jobTaskRepositoryLastSchemaNb",
                                               "uploadQuality"};

constexpr KnownApplication applications[] = {
    {"com.trautvetter.atomicbrowser", "AtomicWeb", atomicWebData},
    {"com.badoo.Badoo", "Badoo", badooData},
    {"net.box.BoxNet", "Box", boxData, boxPreferences},
    {"com.google.chrome.ios", "Chrome", chromeData},
    {"com.dolphin.browser", "Dolphin", dolphinData},
    {"com.hianzinjong.Downloads", "Downloads", downloadsData},
    {"com.facebook.Facebook", "Facebook", facebookData},
    {"com.facebook.Messenger", "Messenger", messengerData},
    {"com.facebook.PageAdminApp", "Pages", pagesData},
    {"com.flipboard.flipboard", "Flipboard", flipboardData},
    {"com.google.GoogleMobile", "Search", searchData},
    {"com.google.Maps", "GMaps", gMapsData},
    {"com.google.GooglePlus", "GPlus", gPlusData},
    {"de.icab.iCabMobile", "iCab", iCabData},
    {"com.burbn.instagram", "Instagram", instagramData},
    {"com.ilegendsoft.MBrowser", "Mercury", mercuryData},
    {"com.skyfire.browser", "Skyfire", skyfireData},
    {"com.niksoftware.snapseedforipad", "Snapseed", snapseedData},
    {"com.soundcloud.TouchApp", "SoundCloud", soundCloudData},
    {"com.melodis.midomi", "SoundHound", soundHoundData},
    {"com.sparrowmailapp.iphoneapp", "Sparrow", sparrowData},
    {"com.spotify.client", "Spotify", spotifyData},
    {"com.atebits.Tweetie2", "Twitter", twitterData},
    {"org.wikimedia.wikipedia", "Wikipedia", wikipediaData},
};

} // namespace

std::span<const KnownApplication> knownApplications() {
    return applications;
}

} // namespace ozdevice
