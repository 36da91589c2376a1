#include "DeviceBuild.h"
#include "Platform/Device/DeviceNames.h"

namespace ozdevice {
namespace {

// Files of applications, of packages (by their own names and by others), of nobody any more, and of the
// system.
constexpr TreeEntry preferences[] = {
    {"/var/mobile/Library/Preferences/UITextInputContextIdentifiers.plist"},
    {"/var/mobile/Library/Preferences/com.apple.Maps.plist"},
    {"/var/mobile/Library/Preferences/com.apple.mobilesafari.plist"},
    {"/var/mobile/Library/Preferences/com.flipswitch.autolock.plist"},
    {"/var/mobile/Library/Preferences/com.rbt.batteryLife.plist"},
    {"/var/mobile/Library/Preferences/com.saurik.Cydia.plist"},
    {"/var/mobile/Library/Preferences/com.saurik.WinterBoard.plist"},
    {"/var/mobile/Library/Preferences/kbd.plist"},
    {"/var/mobile/Library/Preferences/mediaremoted.plist"},
    {"/var/mobile/Library/Preferences/nfcd.plist"},
    {"/var/mobile/Library/Preferences/notes.txt"},
    {"/var/mobile/Library/Preferences/org.hillside.dock.settings.plist"},
    {"/var/mobile/Library/Preferences/org.hillside.gone.plist"},
    {"/var/mobile/Library/Preferences/org.hillside.statusdots.plist"},
    {"/var/mobile/Library/Preferences/org.hillside.terminal.plist"},
    {"/var/mobile/Library/Preferences/stray.plist"},
    {"/var/mobile/Library/Caches/libactivator.plist"},
    {"/var/root/Library/Preferences/.GlobalPreferences.plist"},
    {"/var/root/Library/Preferences/com.apple.nsurlsessiond.plist"},
    {"/var/root/Library/Preferences/com.saurik.Cydia.plist"},
    {"/var/root/Library/Preferences/org.hillside.daemon.plist"},
};

} // namespace

void addPreferences(DeviceBuild& build) {
    build.add(preferences);
    // Since 9 a language has its region behind it.
    const bool hasRegions = build.generation.major >= 9;
    build.add(devicename::globalPreferences,
              platform::Dictionary{{"AppleLanguages", platform::Array{hasRegions ? "en-US" : "en",
                                                                      hasRegions ? "de-DE" : "de"}},
                                   {"AppleLocale", "en_US"}});
}

} // namespace ozdevice
