#include "DeviceBuild.h"
#include "Platform/Device/DeviceNames.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

constexpr TreeEntry safari[] = {
    {"/var/mobile/Library/Safari/Bookmarks.db"},
    {"/var/mobile/Library/Safari/History.plist"},
    {"/var/mobile/Library/Safari/SuspendState.plist"},
    {"/var/mobile/Library/Caches/Safari/Thumbnails/front.png"},
    {"/var/mobile/Library/Caches/com.apple.WebAppCache/ApplicationCache.db"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db-shm"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db-wal"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/RecentSearches.plist"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/Settings.plist"},
    {"/var/mobile/Library/Caches/com.apple.mobilesafari/Thumbnails/page.png"},
    {"/var/mobile/Library/WebKit/Cookies/Cookies.db"},
    {"/var/mobile/Library/WebKit/Databases/Databases.db"},
    {"/var/mobile/Library/WebKit/LocalStorage/example.localstorage"},
    {"/var/mobile/Library/WebKit/Keep/settings.plist"},
    {"/var/root/Library/WebKit/LocalStorage/example.localstorage"},
};

constexpr TreeEntry updates[] = {
    {"/var/MobileSoftwareUpdate/MobileAsset.zip"},
    {"/var/MobileSoftwareUpdate/Controller/state.plist"},
    {"/var/mobile/MobileSoftwareUpdate/restore.log"},
    {"/var/mobile/Library/Assets/com_apple_MobileAsset_SoftwareUpdate/a1.asset/AssetData/payload"},
    {"/var/mobile/Library/Assets/com_apple_MobileAsset_SoftwareUpdatingBrain/brain.plist"},
    {"/var/mobile/Library/Assets/com_apple_MobileAsset_Fonts/f1.asset/Info.plist"},
    {.path =
         "/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdateDocumentation/d1.asset/AssetData/notes",
     .since = 8},
    {.path = "/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdatingBrain/brain.plist", .since = 8},
};

constexpr TreeEntry battery[] = {
    {"/var/mobile/Library/BatteryLife/Archives/powerlog_2017-11-01.PLSQL.gz"},
    {"/var/mobile/Library/BatteryLife/Archives/Extended/powerlog_2017-11-02.PLSQL.gz"},
    {"/var/mobile/Library/BatteryLife/CurrentPowerlog.PLSQL"},
};

// Archives of the last seven days are still being uploaded, and deeper ones belong to others.
constexpr TreeEntry batteryArchives[] = {
    {.path = "/Library/BatteryLife/CurrentPowerlog.PLSQL", .ageInDays = 20},
    {.path = "/Library/BatteryLife/Archives/powerlog_old_1.PLSQL.gz", .ageInDays = 12},
    {.path = "/Library/BatteryLife/Archives/powerlog_old_2.PLSQL.gz", .ageInDays = 45},
    {.path = "/Library/BatteryLife/Archives/powerlog_new.PLSQL.gz", .ageInDays = 2},
    {.path = "/Library/BatteryLife/Archives/Extended/powerlog_old_3.PLSQL.gz", .ageInDays = 45},
};

constexpr TreeEntry cydia[] = {
    {"/var/mobile/Library/Caches/com.saurik.Cydia/ApplicationCache.db"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/Cache.db"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/Cache.db-wal"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/metadata.cb0"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/sources.list"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/LocalStorage/file__0.localstorage"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/SDURLCache/page"},
    {.path = "/var/mobile/Library/Caches/com.saurik.Cydia/com.apple.metal/functions.data", .since = 8},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/com.apple.opengl/compileCache.data"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/fsCachedData/17"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/lists/repo.example.org_._Packages"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/lists/repo.example.org_._Release"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/lists/partial/repo.example.org_._Packages.bz2"},
    {"/var/mobile/Library/Caches/com.saurik.Cydia/archives/partial/org.hillside.half_1.0_iphoneos-arm.deb"},
    {"/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia/Main/front.png"},
    {"/var/lib/apt/lists/repo.example.org_._Packages"},
    {"/var/lib/apt/lists/repo.example.org_._Release"},
    {"/var/lib/apt/lists/partial/repo.example.org_._Packages.gz"},
    {"/var/cache/apt/archives/partial/"},
    // Caches of applications that packages installed.
    {"/var/mobile/Library/Caches/org.hillside.terminal/Cache.db"},
    {"/var/root/Library/Caches/org.hillside.terminal/Cache.db"},
    {"/var/mobile/Library/Caches/Snapshots/org.hillside.terminal/front.png"},
    {"/var/root/Library/Caches/Snapshots/org.hillside.terminal/front.png"},
    {"/var/mobile/Library/Filza/.Trash/old.txt"},
    {"/var/mobile/Library/Filza/Bookmarks.plist"},
    {"/var/mobile/Library/iFile/Trash/old.txt"},
    {"/var/mobile/Library/iFile/Cache/listing.db"},
    {"/var/mobile/Library/iFile/Bookmarks.plist"},
};

constexpr TreeEntry snapshots[] = {
    {"/var/mobile/Library/WebClips/7D0F1B.webclip/Info.plist"},
    {"/var/mobile/Library/WebClips/7D0F1B.webclip/icon.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.apple.mobilesafari/front.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.apple.webapp/front.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.apple.webapp-7D0F1B/front.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.apple.webapp-GONE/front.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.example.removed/front.png"},
    {"/var/mobile/Library/Auxo/Snapshots/com.saurik.Cydia/front.png"},
};

constexpr TreeEntry mobileCaches[] = {
    {"/var/mobile/Library/Caches/BarDialer"},
    {"/var/mobile/Library/Caches/BarDialer_selected"},
    {"/var/mobile/Library/Caches/BarRecents"},
    {"/var/mobile/Library/Caches/BarRecents_selected"},
    {"/var/mobile/Library/Caches/BarVM"},
    {"/var/mobile/Library/Caches/BarVM_selected"},
    {"/var/mobile/Library/Caches/BarOther"},
    {"/var/mobile/Library/Caches/Maps/MapTiles/MapTiles.sqlitedb"},
    {"/var/mobile/Library/Caches/MapTiles/MapTiles.sqlitedb"},
    {"/var/mobile/Library/Caches/Maps/Bookmarks.plist"},
    {"/var/mobile/Library/Caches/com.apple.SpringBoard.notificationCenterLinen"},
    {"/var/mobile/Library/Caches/com.apple.SpringBoard.folderSwitcherLinen.1"},
    {"/var/mobile/Library/Caches/com.apple.springboard-imagecache-icons"},
    {"/var/mobile/Library/Caches/com.apple.springboard-layout"},
    {"/var/mobile/Library/Caches/al/banner.png"},
    {"/var/mobile/Library/Caches/admob/banner.png"},
    {"/var/mobile/Library/Caches/http_www.example.org_0.localstorage"},
    {"/var/mobile/Library/Caches/https_www.example.org/db.db"},
    {"/var/mobile/Library/Caches/pagead.google.example/ad.png"},
    {"/var/mobile/Library/Caches/com.admob.banner"},
    {"/var/mobile/Library/Caches/com.apple.keyboards/images/key.png"},
    {"/var/mobile/Library/Caches/com.apple.springboard.newsstand/cover.png"},
    {"/var/mobile/Library/Caches/com.apple.springboard.sharedimagecache/Persistent/icon.png"},
    {"/var/mobile/Library/Caches/com.apple.springboard.sharedimagecache/Keep/icon.png"},
    {"/var/mobile/Library/Caches/com.apple.AppStore/Cache.db"},
    {"/var/mobile/Library/Caches/com.apple.storeservices/SSAppImageDatabaseCacheEntry/1.png"},
    {"/var/mobile/Library/Caches/com.apple.storeservices/Keep.plist"},
    {"/var/mobile/Library/Caches/com.apple.IconsCache/icon.png"},
    {"/var/mobile/Library/Caches/com.apple.SiriViewService/Cache.db"},
    {"/var/mobile/Library/Caches/com.apple.UIStatusBar/bar.png"},
    {"/var/mobile/Library/Caches/ImageCache/a.png"},
    {"/var/mobile/Library/Caches/sharedCaches/a"},
    {"/var/mobile/Library/Caches/SpringBoardIconCache/a.png"},
    {"/var/mobile/Library/Caches/SpringBoardIconCache-small/a.png"},
    {"/var/mobile/Library/Caches/Snapshots/com.apple.Maps/front.png"},
    {"/var/mobile/Library/Caches/Three20/a.png"},
    {"/var/mobile/Library/Caches/com.apple.Pasteboard/keep.plist"},
    {"/var/mobile/Library/Spotlight/index/live.0.index"},
    {"/var/mobile/Library/googleanalytics-v2.sql"},
    {"/var/mobile/Library/googlemaps.note"},
    {"/var/mobile/Library/Keyboard/Caches/de.cache"},
    {"/var/mobile/Library/Keyboard/Cache/en.cache"},
    {"/var/mobile/Library/Keyboard/en-dynamic-text.dat"},
    {"/var/mobile/Library/GameKit/Data/images/avatar.png"},
    {"/var/mobile/Library/com.apple.iTunesStore/LocalStorage/itunes.localstorage"},
    {"/var/mobile/Library/com.apple.iTunesStore/Reviews/1.plist"},
    {"/var/mobile/.bash_history"},
    {"/var/mobile/.profile"},
    {"/var/mobile/Documents/admob/banner.png"},
    {"/var/mobile/Documents/.flurryAgent"},
    {"/var/mobile/Documents/.initialTimestamp"},
    {"/var/mobile/Documents/.googleanalytics"},
    {"/var/mobile/Documents/googleanalytics-mine.txt"},
    {"/var/mobile/Documents/letter.txt"},
};

constexpr TreeEntry rootCaches[] = {
    {"/var/root/Library/Caches/locationd/consolidated.db"},
    {"/var/root/Library/Caches/locationd/clients.plist"},
    {"/var/root/Library/Caches/com.apple.coresymbolicationd/data"},
    {"/var/root/Library/Caches/com.apple.UIStatusBar/bar.png"},
    {"/var/root/Library/Caches/http_www.example.org_0.localstorage"},
    {"/var/root/Library/Caches/pagead.google.example"},
    {"/var/root/Library/Caches/Keep.plist"},
    {"/var/root/.bash_history"},
    {"/var/root/.lesshst"},
    {"/var/root/.profile"},
};

constexpr TreeEntry temporaryFiles[] = {
    {"/var/tmp/log-backboardd.txt"},
    {"/var/tmp/logs/inner/trace.txt"},
    {"/var/tmp/catalog.txt"},
    {"/var/tmp/install.staging/part"},
    {"/var/tmp/com.apple.blued.state"},
    {"/var/tmp/.iomfgamma.dat"},
    {.path = "/var/tmp/.pangu93loaded", .since = 9},
    {"/var/tmp/SpringBoard_reboot_flag"},
    {.path = "/var/tmp/jailbreakd.pid", .since = 10},
    {"/var/tmp/sock"},
    {"/var/tmp/sshstate"},
    {"/var/tmp/nested/sshstate"},
    {"/var/spool/mdt/queue/1"},
    {"/var/mobile/Media/ApplicationArchives/Notes.zip"},
    {"/var/mobile/Media/Books/keep.epub"},
};

// What a user could add as custom files, and what is found by its extension outside of every container.
constexpr TreeEntry looseFiles[] = {
    {"/var/mobile/Documents/Downloads/part-01.bin"},
    {"/var/mobile/Documents/Downloads/part-02.bin"},
    {"/var/mobile/Documents/Downloads/sub/part-03.bin"},
    {"/var/mobile/Documents/Downloads/invoice.pdf"},
    {"/var/mobile/Documents/build.log"},
    {"/var/mobile/Documents/build.logs"},
    {"/var/mobile/Documents/draft.tmp"},
    {"/var/mobile/Documents/scratch.temp"},
    {"/var/mobile/Documents/changelog"},
    {"/var/mobile/Documents/build.log.txt"},
    {"/usr/share/misc/setup.log"},
    {"/Library/Themes/Hillside.theme/export.tmp"},
};

} // namespace

void addCaches(DeviceBuild& build) {
    build.add(safari);
    build.add(updates);
    build.add(battery);
    build.add(cydia);
    build.add(snapshots);
    build.add(mobileCaches);
    build.add(rootCaches);
    build.add(temporaryFiles);
    build.add(looseFiles);
    if (!build.generation.systemGroupData.empty()) {
        const std::string container =
            std::string(build.generation.systemGroupData) + "/" + build.random.uuid();
        build.add(batteryArchives, container);
        build.add(fmt::format("{}/{}", container, devicename::containerMetadata),
                  platform::Dictionary{{"MCMMetadataIdentifier", "systemgroup.com.apple.powerlog"}});
    }
}

} // namespace ozdevice
