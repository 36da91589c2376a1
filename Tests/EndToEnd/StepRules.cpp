#include "Tests/EndToEnd/StepRules.h"

#include <ostream>

namespace {

using enum Goes;

constexpr StepRule allAttachments[] = {
    {item, "/var/mobile/Library/SMS/(Attachments|Parts)/[^/]+"},
};

// Each is a file that no message has, or a folder that holds nothing else.
constexpr StepRule unknownAttachments[] = {
    {file, "/var/mobile/Library/SMS/Attachments/stray\\.jpg"},
    {item, "/var/mobile/Library/SMS/Attachments/2c/12/91C7A1C2-52D4"},
    {item, "/var/mobile/Library/SMS/Attachments/5e"},
    {item, "/var/mobile/Library/SMS/Attachments/7a"},
    {item, "/var/mobile/Library/SMS/Attachments/7b"},
    {item, "/var/mobile/Library/SMS/Parts/00/03"},
    {item, "/var/mobile/Library/SMS/Parts/00/04"},
};

#define OZ_SAFARI "/var/mobile/Containers/Data/Application/com\\.apple\\.mobilesafari"

constexpr StepRule safari[] = {
    {file, "/var/mobile/Library/Safari/(History|SuspendState)\\.plist"},
    {item, "/var/mobile/Library/Caches/Safari/[^/]+"},
    {item, "/var/mobile/Library/Caches/com\\.apple\\.WebAppCache/[^/]+"},
    {item, "/var/mobile/Library/WebKit/Cookies/[^/]+"},
    {item, "/var/mobile/Library/WebKit/Databases/[^/]+"},
    {item, "/var/mobile/Library/WebKit/LocalStorage/[^/]+"},
    {item, "/var/root/Library/WebKit/LocalStorage/[^/]+"},
    {file, "/var/mobile/Library/Caches/com\\.apple\\.mobilesafari/Cache\\.db"},
    {file, "/var/mobile/Library/Caches/com\\.apple\\.mobilesafari/Cache\\.db-[^/]*"},
    {file, "/var/mobile/Library/Caches/com\\.apple\\.mobilesafari/RecentSearches\\.plist"},
    {item, "/var/mobile/Library/Caches/com\\.apple\\.mobilesafari/Thumbnails/[^/]+"},
    {item, OZ_SAFARI "/Library/Caches/[^/]+"},
    {item, OZ_SAFARI "/tmp/[^/]+"},
    {file, OZ_SAFARI "/Library/Safari/Thumbnails/[^/]+"},
    {item, OZ_SAFARI "/Library/WebKit/LocalStorage/[^/]+"},
    {item, OZ_SAFARI "/Library/WebKit/WebsiteData/[^/]+"},
    {file, OZ_SAFARI "/Library/Safari/RecentSearches\\.plist"},
    {file, OZ_SAFARI "/Library/Safari/SuspendState\\.plist"},
    {file, OZ_SAFARI "/Library/Safari/History\\.[^/]*"},
};

// All containers but the browser's and those of the application that the user has excluded.
#define OZ_CONTAINER                                                                                         \
    "/var/mobile/Containers/(Data/Application|Data/PluginKitPlugin|Shared/AppGroup)/"                        \
    "(?!com\\.apple\\.mobilesafari/|(group\\.)?org\\.example\\.diary[./])[^/]+"
#define OZ_DATA "/var/mobile/Containers/Data/Application/"

constexpr StepRule applications[] = {
    {item, OZ_CONTAINER "/Library/Application Support/FlurryFiles/[^/]+"},
    {item, OZ_CONTAINER "/Library/FlurryFiles/[^/]+"},
    {item, OZ_CONTAINER "/Library/Caches/[^/]+"},
    {item, OZ_CONTAINER "/tmp/[^/]+"},
    {item, OZ_CONTAINER "/Library/WebKit/Cookies/[^/]+"},
    {item, OZ_CONTAINER "/Library/WebKit/Databases/[^/]+"},
    {item, OZ_CONTAINER "/Library/WebKit/LocalStorage/[^/]+"},
    {item, OZ_CONTAINER "/Library/WebKit/WebsiteData/[^/]+"},
    {file, OZ_CONTAINER "/(Documents|Library)/\\.flurry[^/]*"},
    {file, OZ_CONTAINER "/(Documents|Library)/\\.initialTimestamp[^/]*"},
    {file, OZ_CONTAINER "/(Documents|Library)/googleanalytics[^/]*"},
    // Well-known applications.
    {item, OZ_DATA "(com\\.trautvetter\\.atomicbrowser|com\\.facebook\\.Messenger)/Library/Cookies/[^/]+"},
    {item, OZ_DATA "com\\.badoo\\.Badoo/Documents/Logs/[^/]+"},
    {item, OZ_DATA "net\\.box\\.BoxNet/(Library/Cachesfs|Documents/PendingUploads)/[^/]+"},
    {file, OZ_DATA "com\\.google\\.chrome\\.ios/Library/Application Support/Google/Chrome/Default/"
                   "(Current Tabs|Last Tabs|UIWebViewCookies|session\\.plist|Histor[^/]*|Top Site[^/]*)"},
    {item, OZ_DATA "com\\.google\\.chrome\\.ios/Library/(Cookies|Application Support/Google/Chrome/Default/"
                   "(OTR|LocalStorage))/[^/]+"},
    {item, OZ_DATA "com\\.dolphin\\.browser/(Library/Cookies|Documents/Downloads/temp|Library/ImageCache|"
                   "Library/SNAPSHOT_FOLDER)/[^/]+"},
    {file, OZ_DATA "com\\.dolphin\\.browser/Library/tabs\\.archive"},
    {file, OZ_DATA "com\\.hianzinjong\\.Downloads/Library/(BrowserState|History)\\.plist"},
    {item, OZ_DATA "com\\.hianzinjong\\.Downloads/Library/Cookies/[^/]+"},
    {item, OZ_DATA "com\\.facebook\\.Facebook/Library/(Cookies|Application Support/com\\.facebook\\.Facebook/"
                   "videoads)/[^/]+"},
    {item, OZ_DATA "com\\.facebook\\.PageAdminApp/Documents/Backups/[^/]+"},
    {item,
     OZ_DATA "com\\.flipboard\\.flipboard/(Documents/Logs|Documents/IssueReports|Library/YouTube)/[^/]+"},
    {file, OZ_DATA "com\\.google\\.GoogleMobile/Library/GoogleMobile/searchhistory\\.db"},
    {item, OZ_DATA "com\\.google\\.GoogleMobile/Library/GoogleMobile/SearchHistoryImages/[^/]+"},
    {file, OZ_DATA "com\\.google\\.Maps/Library/Application Support/"
                   "(Objects\\.sqlite|ServerControlledParams|StreetView\\.sqlite|Tiles\\.sqlite)"},
    {file,
     OZ_DATA "com\\.google\\.GooglePlus/Documents/((AvatarView|MediaFileCache|Model|NetImageView)\\.sqlite|"
             "MediaUploader[^/]*)"},
    {file, OZ_DATA "com\\.google\\.GooglePlus/gplus-log-[^/]*"},
    {file, OZ_DATA
     "de\\.icab\\.iCabMobile/Documents/\\.iCabMobileFiles\\.private/(AllCookies|History|TabsHistory)"},
    {item, OZ_DATA "de\\.icab\\.iCabMobile/(Library/Cookies|Documents/\\.iCabMobileFiles\\.private/"
                   "(QuickStarter|TabsRestore))/[^/]+"},
    {file, OZ_DATA "com\\.burbn\\.instagram/Documents/[^/]*\\.coded"},
    {item, OZ_DATA "com\\.ilegendsoft\\.MBrowser/Library/(Cookies|Mercury/(cache|websiteimages))/[^/]+"},
    {file, OZ_DATA "com\\.skyfire\\.browser/Documents/(History\\.plist|SiteMessageTracker\\.archive|"
                   "TabbedView\\.archive|urlOnPasteboard\\.archive)"},
    {item, OZ_DATA "com\\.skyfire\\.browser/Library/Cookies/[^/]+"},
    {item, OZ_DATA "com\\.niksoftware\\.snapseedforipad/Library/Snapseed SessionData/[^/]+"},
    {item, OZ_DATA "com\\.soundcloud\\.TouchApp/Documents/recordings/[^/]+"},
    {file, OZ_DATA "com\\.melodis\\.midomi/Library/(savedState\\.plist|searches|visited)"},
    {item, OZ_DATA "com\\.melodis\\.midomi/Library/(query_audio|YouTube)/[^/]+"},
    {file, OZ_DATA "com\\.sparrowmailapp\\.iphoneapp/Library/Application Support/Sparrow/crash-sent\\.plist"},
    {item, OZ_DATA "com\\.sparrowmailapp\\.iphoneapp/Library/Application Support/Sparrow/Cache/[^/]+"},
    {file, OZ_DATA "com\\.spotify\\.client/Library/Application Support/loading\\.png"},
    {item, OZ_DATA "com\\.spotify\\.client/Library/Logs/[^/]+"},
    {item, OZ_DATA "com\\.atebits\\.Tweetie2/(Documents/com\\.atebits\\.tweetie\\.(application-state|"
                   "application-important-state|compose\\.attachments)|Library/Cookies)/[^/]+"},
    {item, OZ_DATA "org\\.wikimedia\\.wikipedia/Library/(Backups|Databases|LocalStorage)/[^/]+"},
};

constexpr StepRule otaUpdates[] = {
    {item, "/var/MobileSoftwareUpdate/[^/]+"},
    {item, "/var/mobile/MobileSoftwareUpdate/[^/]+"},
    {item, "/var/mobile/Library/Assets/com_apple_MobileAsset_SoftwareUpdat[^/]*"},
    {item, "/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdate[^/]*"},
};

constexpr StepRule batteryData[] = {
    {item, "/var/mobile/Library/BatteryLife/Archives/[^/]+"},
    {file,
     "/var/containers/Shared/SystemGroup/systemgroup\\.com\\.apple\\.powerlog/Library/BatteryLife/Archives/"
     "powerlog_old_[12]\\.PLSQL\\.gz"},
};

constexpr StepRule cydia[] = {
    {item, "/var/mobile/Library/Caches/Snapshots/com\\.saurik\\.Cydia"},
    {item, "/var/mobile/Library/Caches/com\\.saurik\\.Cydia/(LocalStorage|SDURLCache|com\\.apple\\.opengl|"
           "com\\.apple\\.metal|fsCachedData)"},
    {file, "/var/mobile/Library/Caches/com\\.saurik\\.Cydia/(ApplicationCache\\.db|Cache\\.db[^/]*)"},
    // Applications that came with packages and show an icon.
    {item, "/var/mobile/Library/Caches/org\\.hillside\\.terminal"},
    {item, "/var/root/Library/Caches/org\\.hillside\\.terminal"},
    {item, "/var/(mobile|root)/Library/Caches/Snapshots/org\\.hillside\\.terminal"},
    {item, "/var/mobile/Library/Filza/\\.Trash/[^/]+", 7},
    {item, "/var/mobile/Library/iFile/(Trash|Cache)/[^/]+"},
    {file, "/Applications/iCaughtUPro\\.app/(log\\.txt|\\.dat[^/]*)"},
    {item, "/var/mobile/Library/Auxo/Snapshots/(com\\.apple\\.webapp-GONE|com\\.example\\.removed)"},
    {item, "/var/lib/apt/lists/partial/[^/]+"},
    {item, "/var/mobile/Library/Caches/com\\.saurik\\.Cydia/lists/partial/[^/]+"},
    {item, "/var/mobile/Library/Caches/com\\.saurik\\.Cydia/archives/partial/[^/]+"},
};

constexpr StepRule cydiaSources[] = {
    {file, "/var/lib/apt/lists/[^/]+"},
    {file, "/var/mobile/Library/Caches/com\\.saurik\\.Cydia/lists/[^/]+"},
};

constexpr StepRule logFiles[] = {
    {file, "/var/mobile/Library/Logs/.+"},
    {link, "/var/mobile/Library/Logs/CrashReporter/.+"},
    // Reports that links of the reporter's folder lead to.
    {file, "/var/mobile/Library/CrashReports/SpringBoard-2017-11-04\\.ips"},
    {file, "/var/root/CrashReports/linked\\.ips"},
    {file, "/var/logs/.+"},
    {file, "/var/log/.+"},
    {file, "/var/wireless/Library/Logs/.+"},
};

#define OZ_CACHES "/var/mobile/Library/Caches"

constexpr StepRule cacheFiles[] = {
    {file, OZ_CACHES "/Bar(Dialer|Recents|VM)(_selected)?"},
    {file, OZ_CACHES "/(Maps/)?MapTiles/MapTiles\\.sqlitedb"},
    {file, OZ_CACHES "/com\\.apple\\.SpringBoard\\.notificationCenterLinen"},
    {item, OZ_CACHES "/al"},
    {item, OZ_CACHES "/admob"},
    {file, OZ_CACHES "/com\\.apple\\.springboard-imagecache[^/]*"},
    {file, OZ_CACHES "/com\\.apple\\.SpringBoard\\.folderSwitcherLinen[^/]*"},
    {item, OZ_CACHES "/https?_[^/]*"},
    {item, OZ_CACHES "/[^/]*google[^/]*"},
    {item, OZ_CACHES "/[^/]*\\.admob\\.[^/]*"},
    {item, OZ_CACHES "/com\\.apple\\.keyboards/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.springboard\\.newsstand/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.springboard\\.sharedimagecache/Persistent/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.AppStore/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.storeservices/SSAppImageDatabaseCacheEntry/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.IconsCache/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.SiriViewService/[^/]+"},
    {item, OZ_CACHES "/com\\.apple\\.UIStatusBar/[^/]+"},
    {item, OZ_CACHES "/(ImageCache|sharedCaches|SpringBoardIconCache|SpringBoardIconCache-small)/[^/]+"},
    {item, OZ_CACHES "/Snapshots/[^/]+"},
    {item, OZ_CACHES "/Three20/[^/]+"},
    {file, "/var/mobile/Library/Spotlight/.+", 4, 10},
    {file, "/var/mobile/Library/googleanalytics[^/]*"},
    {item, "/var/mobile/Library/Keyboard/Caches?/[^/]+"},
    {item, "/var/mobile/Library/GameKit/Data/[^/]+"},
    {item, "/var/mobile/Library/com\\.apple\\.iTunesStore/(LocalStorage|Reviews)/[^/]+"},
    {file, "/var/mobile/\\.bash_history"},
    {item, "/var/mobile/Documents/admob/[^/]+"},
    {file, "/var/mobile/Documents/\\.(flurry|initialTimestamp|googleanalytics)[^/]*"},
    {file, "/var/root/Library/Caches/locationd/consolidated\\.db"},
    {item, "/var/root/Library/Caches/com\\.apple\\.coresymbolicationd"},
    {item, "/var/root/Library/Caches/com\\.apple\\.UIStatusBar/[^/]+"},
    {item, "/var/root/Library/Caches/https?_[^/]*"},
    {item, "/var/root/Library/Caches/[^/]*(google|\\.admob\\.)[^/]*"},
    {file, "/var/root/\\.(bash_history|lesshst)"},
};

constexpr StepRule tempFiles[] = {
    {item, "/var/tmp/log[^/]*"},
    {file, "/var/tmp/(.+/)?(?!(sock|sshstate|SpringBoard_reboot_flag|\\.iomfgamma\\.dat|\\.pangu93loaded|"
           "jailbreakd\\.pid)$)(?![^/]*blued)[^/]+"},
    {item, "/var/spool/mdt/[^/]+"},
    {item, "/var/mobile/Media/ApplicationArchives/[^/]+"},
};

constexpr StepRule fileTypes[] = {
    {file, "(?!/var/containers/Bundle/Application/|/var/mobile/Containers/Data/Application/|"
           "/var/mobile/Containers/Shared/AppGroup/).*\\.(log|logs|tmp|temp)"},
};

constexpr StepRule customFiles[] = {
    {file, "/var/mobile/Documents/Downloads/invoice\\.pdf"},
    {item, "/var/mobile/Documents/Scratch"},
    {file, "/var/mobile/Documents/Traces/.+"},
    {file, "/var/mobile/Documents/Downloads/(.+/)?part-[^/]*\\.bin"},
    {item, "/var/mobile/Media/Recordings/[^/]+"},
    {item, OZ_CACHES "/[^/]*springboard[^/]*"},
    {file, OZ_CACHES "/http[^/]*"},
};

// What the package tools take: the package that nothing needs, and their downloads.
constexpr StepRule dependencies[] = {
    {file, "/usr/lib/libleftover\\.dylib"},
    {file, "/var/lib/dpkg/info/org\\.hillside\\.leftover\\.[^/]*"},
    {file, "/var/cache/apt/archives/[^/]*\\.deb"},
    {file, "/var/lib/apt/lists/partial/[^/]+"},
};

constexpr StepCase cases[] = {
    {"ATTACHMENTS", 2, allAttachments},
    {"ATTACHMENTS", 1, unknownAttachments},
    {"SAFARI", 1, safari},
    {"APPLICATIONS", 1, applications},
    {"OTAUPDATES", 1, otaUpdates},
    {"BATTERYDATA", 1, batteryData, 8},
    {"CYDIA", 1, cydia},
    {"CYDIASOURCES", 1, cydiaSources},
    {"LOGFILES", 1, logFiles},
    {"CACHEFILES", 1, cacheFiles},
    {"TEMPFILES", 1, tempFiles},
    {"FILETYPECLEANUP", 1, fileTypes},
    {"CUSTOMFILES", 1, customFiles},
};

// Names that miss a rule by little, and links that lead from what goes to what stays.
constexpr std::string_view neighbours[] = {
    "/private/var/mobile/Library/SMS/Attachments/link -> ../../Notes",
    "/private/var/mobile/Library/SMS/Attachments.old/a.jpg: x",
    "/private/var/mobile/Library/Safari/History.plist.bak: x",
    "/private/var/mobile/Library/Safari/Old/History.plist: x",
    "/private/var/mobile/Library/Caches/Safari/link -> ../../Notes",
    "/private/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db-folder/keep: x",
    "/private/var/mobile/Library/Caches/com.apple.mobilesafari/cache.db: x",
    "/private/var/MobileSoftwareUpdate/link -> /var/mobile/Library/Notes",
    "/private/var/MobileSoftwareUpdate/below/link -> /var/mobile/Library/Notes",
    "/private/var/mobile/Library/Assets/com_apple_MobileAsset_Softwareupdate/keep: x",
    "/private/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdatBrain/keep: x",
    "/private/var/mobile/Library/Caches/org.hillside.agent/Cache.db: x",
    "/private/var/mobile/Library/Caches/org.hillside.terminals/Cache.db: x",
    "/private/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia2/front.png: x",
    "/private/var/mobile/Library/Auxo/Snapshots/linked -> ../../Notes",
    "/private/var/lib/apt/lists/folder/keep: x",
    "/private/var/log/link -> /var/mobile/Library/Notes/notes.sqlite",
    "/private/var/logs2/keep.txt: x",
    "/private/var/mobile/Library/Logs/pipe |",
    "/private/var/root/CrashReports/linked.ips: x",
    "/private/var/mobile/Library/Logs/CrashReporter/LatestCrash-linked.ips -> "
    "/var/root/CrashReports/linked.ips",
    "/private/var/mobile/Library/Logs/CrashReporter/LatestCrash-folder -> /var/root/CrashReports",
    "/private/var/mobile/Library/Caches/al2/keep: x",
    "/private/var/mobile/Library/Caches/link.google -> ../Notes",
    "/private/var/mobile/Library/Caches/ImageCache/link -> ../../Notes",
    "/private/var/mobile/Library/googleanalytics/keep: x",
    "/private/var/root/Library/Caches/locationd/consolidated.db-wal: x",
    "/private/var/tmp/link -> /var/mobile/Library/Notes",
    "/private/var/tmp/logs/link -> /var/mobile/Library/Notes",
    "/private/var/tmp/logs/sshstate: x",
    "/private/var/tmp/logo: x",
    "/private/var/tmp/socket: x",
    "/private/var/tmp/deep/er/blued: x",
    "/private/var/tmp/blued/file: x",
    "/private/var/mobile/Documents/link.log -> letter.txt",
    "/private/var/mobile/Documents/folder.tmp/keep: x",
    "/private/var/mobile/Documents/upper.LOG: x",
    "/private/var/mobile/Documents/Downloads/part-folder.bin/keep: x",
    "/private/var/mobile/Documents/Downloads/Part-04.bin: x",
    "/private/var/mobile/Documents/Traces/link -> ../letter.txt",
    "/private/var/mobile/Media/Recordings/link -> ../DCIM",
    "/private/var/mobile/Library/Caches/httpfolder/keep: x",
};

} // namespace

const std::span<const StepCase> stepCases(cases);
const std::span<const StepRule> dependencyRules(dependencies);
const std::span<const std::string_view> stepNeighbours(neighbours);

std::ostream& operator<<(std::ostream& out, const StepCase& step) {
    return out << step.key;
}
