#include "Packages.h"

namespace ozdevice {
namespace {

#define OZ_ADD_ON(name)                                                                                      \
    {.path = "/Library/MobileSubstrate/DynamicLibraries/" name ".dylib", .mode = 0755}, {                    \
        "/Library/MobileSubstrate/DynamicLibraries/" name ".plist"                                           \
    }

constexpr TreeEntry substrate[] = {
    {"/Library/Frameworks/CydiaSubstrate.framework/Info.plist"},
    {"/Library/MobileSubstrate/MobileSubstrate.dylib"},
};
constexpr TreeEntry safeMode[] = {OZ_ADD_ON("MobileSafety")};
constexpr TreeEntry preferenceLoader[] = {OZ_ADD_ON("PreferenceLoader"), {"/usr/lib/libprefs.dylib"}};
constexpr TreeEntry activator[] = {
    OZ_ADD_ON("Activator"), {"/usr/lib/libactivator.dylib"}, {"/Library/Activator/Icon.png"}};
constexpr TreeEntry flipswitch[] = {OZ_ADD_ON("Flipswitch"), {"/usr/lib/libflipswitch.dylib"}};
constexpr TreeEntry winterBoard[] = {OZ_ADD_ON("WinterBoard"), OZ_ADD_ON("IconBundles")};
constexpr TreeEntry anemone[] = {OZ_ADD_ON("AnemoneCore"), OZ_ADD_ON("AnemoneIcons"),
                                 OZ_ADD_ON("AnemoneUIKit")};
constexpr TreeEntry iconSupport[] = {OZ_ADD_ON("IconSupport")};
constexpr TreeEntry statusDots[] = {OZ_ADD_ON("StatusDots")};
constexpr TreeEntry dock[] = {OZ_ADD_ON("DockColumns")};
constexpr TreeEntry lockClock[] = {OZ_ADD_ON("LockClock"),
                                   {"/Library/PreferenceLoader/Preferences/LockClock/LockClock.png"}};
constexpr TreeEntry lockClockExtra[] = {OZ_ADD_ON("LockClockExtra")};
constexpr TreeEntry batteryLife[] = {{"/usr/share/batterylife/table.txt"}};
constexpr TreeEntry library[] = {{"/usr/lib/libhillside.dylib"}};
constexpr TreeEntry oldLibrary[] = {{"/usr/lib/libquarry.dylib"}};
constexpr TreeEntry leftoverLibrary[] = {{"/usr/lib/libleftover.dylib"}};
constexpr TreeEntry filza[] = {{.path = "/usr/libexec/filza/helper", .mode = 0755}};
constexpr TreeEntry caught[] = {
    {"/Applications/iCaughtUPro.app/log.txt"},
    {"/Applications/iCaughtUPro.app/.dat1f"},
    {"/Applications/iCaughtUPro.app/settings.dat"},
};
constexpr TreeEntry coreTools[] = {
    {.path = "/bin/cat", .mode = 0755}, {.path = "/bin/cp", .mode = 0755}, {.path = "/bin/mv", .mode = 0755}};
constexpr TreeEntry crashReporter[] = {{.path = "/usr/libexec/crash-scanner", .mode = 0755}};
constexpr TreeEntry ssh[] = {{.path = "/usr/sbin/sshd", .mode = 0755}};

#undef OZ_ADD_ON

constexpr PackageRow packages[] = {
    {.identifier = "coreutils", .name = "Core Utilities", .version = "8.12-13", .files = coreTools},
    {.identifier = "cydia",
     .name = "Cydia Installer",
     .version = "1.1.30",
     .depends = "coreutils, org.hillside.library | libquarry",
     .application = {"com.saurik.Cydia", "Cydia", "Cydia"}},
    {.identifier = "mobilesubstrate", .name = "Cydia Substrate", .version = "0.9.6301", .files = substrate},
    {.identifier = "com.saurik.substrate.safemode",
     .name = "Substrate Safe Mode",
     .version = "0.9.6001",
     .preDepends = "mobilesubstrate (>= 0.9.5)",
     .files = safeMode},
    {.identifier = "preferenceloader",
     .name = "PreferenceLoader",
     .version = "2.2.3-1",
     .depends = "mobilesubstrate, coreutils",
     .files = preferenceLoader},
    {.identifier = "libactivator",
     .name = "Activator",
     .version = "1.9.12",
     .depends = "mobilesubstrate",
     .files = activator,
     .icon = "Activator.png"},
    {.identifier = "com.a3tweaks.flipswitch",
     .name = "Flipswitch",
     .version = "1.0.16",
     .depends = "mobilesubstrate, libactivator",
     .files = flipswitch},
    {.identifier = "winterboard",
     .name = "WinterBoard",
     .version = "0.9.3923",
     .depends = "mobilesubstrate, preferenceloader",
     .files = winterBoard,
     .until = 8},
    {.identifier = "com.anemonetheming.anemone",
     .name = "Anemone",
     .version = "2.1.7-1",
     .depends = "mobilesubstrate",
     .files = anemone,
     .since = 9},
    {.identifier = "com.rbt.batterylife", .name = "BatteryLife", .version = "1.5.6", .files = batteryLife},
    {.identifier = "crash-reporter",
     .name = "CrashReporter",
     .version = "1.13.0",
     .depends = "preferenceloader",
     .files = crashReporter},
    {.identifier = "openssh",
     .name = "OpenSSH",
     .version = "6.7p1-12",
     .depends = "coreutils",
     .files = ssh,
     .configurationFile = "/etc/ssh/sshd_config"},
    {.identifier = "org.hillside.library",
     .name = "Hillside Library",
     .version = "2.0",
     .preDepends = "coreutils",
     .files = library},
    {.identifier = "org.hillside.iconsupport",
     .name = "Icon Support",
     .version = "1.9",
     .depends = "mobilesubstrate",
     .files = iconSupport},
    {.identifier = "org.hillside.statusdots",
     .name = "Status Dots",
     .version = "1.4",
     .depends = "mobilesubstrate (>= 0.9.5), preferenceloader",
     .files = statusDots,
     .icon = "StatusDots.png"},
    {.identifier = "org.hillside.dock",
     .name = "Dock Columns",
     .version = "0.8",
     .depends = "org.hillside.iconsupport, org.hillside.library | libquarry",
     .files = dock},
    {.identifier = "org.hillside.lockclock",
     .name = "Lock Clock",
     .version = "3.1",
     .depends = "mobilesubstrate, org.hillside.library",
     .files = lockClock},
    {.identifier = "org.hillside.lockclock.extra",
     .name = "Lock Clock Extra",
     .version = "3.1",
     .depends = "org.hillside.lockclock",
     .files = lockClockExtra},
    {.identifier = "org.hillside.terminal",
     .name = "Hillside Terminal",
     .version = "1.0",
     .depends = "coreutils",
     .application = {"org.hillside.terminal", "Terminal", "HillsideTerminal"}},
    {.identifier = "org.hillside.agent",
     .name = "Hillside Agent",
     .version = "1.0",
     .application = {"org.hillside.agent", "Agent", "HillsideAgent"},
     .applicationIcon = Icon::none},
    {.identifier = "com.tigisoftware.filza",
     .name = "File Manager",
     .version = "3.5.0",
     .files = filza,
     .application = {"com.tigisoftware.Filza", "Filza", "Filza"},
     .since = 7},
    {.identifier = "eu.heinelt.ifile",
     .name = "iFile",
     .version = "2.2.0",
     .application = {"eu.heinelt.ifile", "iFile", "iFile"}},
    {.identifier = "com.itaysoft.icaughtupro",
     .name = "iCaughtU Pro",
     .version = "3.2",
     .files = caught,
     .application = {"com.itaysoft.icaughtuproapp", "iCaughtU Pro", "iCaughtUPro"}},
    {.identifier = "libquarry", .name = "Quarry Library", .version = "0.4", .files = oldLibrary},
    {.identifier = "org.hillside.leftover",
     .name = "Leftover Library",
     .version = "0.2",
     .state = PackageState::automatic,
     .files = leftoverLibrary},
    {.identifier = "org.hillside.removed",
     .name = "Removed Tweak",
     .version = "1.0",
     .state = PackageState::configurationLeft,
     .configurationFile = "/etc/hillside/removed.conf"},
};

constexpr PreferenceBundleRow preferenceBundles[] = {
    {"org.hillside.statusdots", "StatusDots", "Status Dots", "StatusDotsPreferences", "icon.png"},
    {"org.hillside.dock", "DockColumns", "Dock Columns", "DockPreferences", "icon.png", 0, 847.20},
    {"org.hillside.dock", "DockColumns7", "Dock Columns", "DockPreferences", "icon.png", 847.20},
    {"org.hillside.lockclock", "LockClock/LockClock", "Lock Clock", "", "LockClock.png"},
    {"libactivator", "LibActivator", "Activator", "LibActivator", "/Library/Activator/Icon.png", 478.47},
};

} // namespace

std::span<const PackageRow> packageTable() {
    return packages;
}

std::span<const PreferenceBundleRow> preferenceBundleTable() {
    return preferenceBundles;
}

} // namespace ozdevice
