#include "DeviceBuild.h"

namespace ozdevice {
namespace {

constexpr TreeEntry links[] = {
    {"/var", "private/var"},
    {"/tmp", "private/var/tmp"},
    {"/etc", "private/etc"},
    {"/User", "/var/mobile"},
};

constexpr TreeEntry skeleton[] = {
    {"/Applications/"},
    {"/Developer/"},
    {"/Library/"},
    {"/System/Library/CoreServices/"},
    {"/private/etc/"},
    {"/private/var/db/"},
    {"/private/var/empty/"},
    {"/private/var/keybags/"},
    {"/private/var/mobile/Documents/"},
    {"/private/var/mobile/Media/"},
    {"/private/var/root/"},
    {"/private/var/run/"},
    {"/private/var/tmp/"},
    {"/dev/"},
};

constexpr TreeEntry systemFiles[] = {
    {.path = "/bin/bash", .mode = 0755},
    {.path = "/bin/ls", .mode = 0755},
    {.path = "/bin/sh", .mode = 0755},
    {.path = "/sbin/launchd", .mode = 0755},
    {.path = "/usr/bin/sqlite3", .mode = 0755},
    {.path = "/usr/lib/dyld", .mode = 0755},
    {.path = "/usr/lib/libSystem.B.dylib", .mode = 0755},
    {.path = "/usr/lib/system.log.dylib", .mode = 0755},
    {.path = "/usr/libexec/backboardd", .mode = 0755},
    {"/usr/share/misc/notes"},
    {"/etc/fstab"},
    {"/etc/hosts"},
    {.path = "/etc/master.passwd", .mode = 0600},
    {"/etc/passwd"},
    {"/System/Library/CoreServices/SpringBoard.app/Info.plist"},
    {.path = "/System/Library/CoreServices/SpringBoard.app/SpringBoard", .mode = 0755},
    {"/System/Library/CoreServices/SpringBoard.app/Default@2x.png"},
    {"/System/Library/CoreServices/SpringBoard.app/Default@3x.png"},
    {"/System/Library/Caches/com.apple.dyld/dyld_shared_cache_arm64"},
    {"/System/Library/Frameworks/UIKit.framework/Info.plist"},
    {.path = "/System/Library/Frameworks/UIKit.framework/UIKit", .mode = 0755},
    {.path = "/var/keybags/systembag.kb", .mode = 0600},
    {"/var/mobile/Media/DCIM/100APPLE/IMG_0001.JPG"},
    {"/var/mobile/Media/DCIM/100APPLE/IMG_0002.JPG"},
    {"/var/mobile/Media/PhotoData/Photos.sqlite"},
    {"/var/mobile/Library/AddressBook/AddressBook.sqlitedb"},
    {"/var/mobile/Library/CallHistory/call_history.db"},
    {"/var/mobile/Library/Notes/notes.sqlite"},
    {"/var/mobile/Library/SpringBoard/IconState.plist"},
};

constexpr TreeEntry fonts[] = {
    {"/System/Library/Fonts/CGFont/Courier.ttf"},
    {"/System/Library/Fonts/Cache/Alder.ttf"},
    {"/System/Library/Fonts/Cache/Basin.ttc"},
    {"/System/Library/Fonts/Core/Cinder.ttf"},
};

// A wallpaper is known by its thumbnail; the defaults and the posters belong to the system.
constexpr TreeEntry wallpapers[] = {
    {"/Library/Wallpaper/iPhone/Alder.png"},
    {"/Library/Wallpaper/iPhone/Alder.thumbnail.png"},
    {"/Library/Wallpaper/iPhone/Basin.png"},
    {"/Library/Wallpaper/iPhone/Basin.thumbnail.png"},
    {"/Library/Wallpaper/iPhone/Basin~568h.png"},
    {"/Library/Wallpaper/iPhone/Cinder.thumbnail.png"},
    {"/Library/Wallpaper/iPhone/default.png"},
    {"/Library/Wallpaper/iPhone/default.thumbnail.png"},
    {.path = "/Library/Wallpaper/Live/Drift.mov", .since = 9},
    {.path = "/Library/Wallpaper/Live/Drift.poster.png", .since = 9},
    {.path = "/Library/Wallpaper/Live/Drift.poster.thumbnail.png", .since = 9},
};

constexpr TreeEntry themes[] = {
    {"/Library/Themes/Hillside.theme/Info.plist"},
    {"/Library/Themes/Hillside.theme/IconBundles/com.apple.mobilesafari-large.png"},
    {"/Library/Themes/Hillside.theme/IconBundles/com.saurik.Cydia-large.png"},
};

} // namespace

void addSystemTree(DeviceBuild& build) {
    build.add(skeleton);
    build.add(links);
    build.add(systemFiles);
    build.add(fonts);
    build.add(wallpapers);
    build.add(themes);
    build.add(
        "/System/Library/CoreServices/SystemVersion.plist",
        platform::Dictionary{{"ProductName", "iPhone OS"},
                             {"ProductVersion", build.generation.productVersion},
                             {"ProductCopyright", ""},
                             {"ProductBuildVersion", build.generation.major >= 11 ? "15B202" : "11D257"}});
}

} // namespace ozdevice
