#include "DeviceBuild.h"

namespace ozdevice {
namespace {

constexpr TreeEntry logs[] = {
    {"/var/mobile/Library/Logs/AppleSupport/general.log"},
    {"/var/mobile/Library/Logs/mobileactivationd/mobileactivationd.log.0"},
    {"/var/mobile/Library/Logs/CrashReporter/Harbor-2017-11-05.ips"},
    {"/var/mobile/Library/Logs/CrashReporter/DiagnosticLogs/stacks.ips"},
    {"/var/logs/AppleSupport/general.log"},
    {"/var/logs/lockdownd.log"},
    {"/var/log/system.log"},
    {"/var/log/asl/2017.11.05.asl"},
    {"/var/wireless/Library/Logs/CrashReporter/Baseband/bb.ips"},
    {"/var/wireless/Library/Preferences/com.apple.awdd.plist"},
};

// A crash report may be filed elsewhere; the link to it is what the reporter shows. Some lead to nothing.
constexpr TreeEntry crashReports[] = {
    {"/var/mobile/Library/CrashReports/SpringBoard-2017-11-04.ips"},
    {"/var/mobile/Library/CrashReports/unlinked-2017-11-03.ips"},
    {"/var/mobile/Library/Logs/CrashReporter/LatestCrash.ips", "Harbor-2017-11-05.ips"},
    {"/var/mobile/Library/Logs/CrashReporter/LatestCrash-SpringBoard.ips",
     "/private/var/mobile/Library/CrashReports/SpringBoard-2017-11-04.ips"},
    {"/var/mobile/Library/Logs/CrashReporter/LatestCrash-Gone.ips",
     "/private/var/mobile/Library/CrashReports/gone.ips"},
};

} // namespace

void addLogs(DeviceBuild& build) {
    build.add(logs);
    build.add(crashReports);
}

} // namespace ozdevice
