#include "DeviceBuild.h"
#include "DeviceFiles.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

enum class Place { system, library, both, systemBackup, libraryBackup };

struct DaemonRow {
    /// Without the prefix that all but the last rows share.
    std::string_view name;
    int since = 0;
    int until = anyMajor;
    Place place = Place::system;
    bool startsDisabled = false;
};

// What can be switched off, as far as the generations have it; then what nobody may touch.
constexpr DaemonRow daemons[] = {
    {"appleprofilepolicyd", 5},
    {"certui.relay", 5},
    {"SpringBoard.SetupHelper", 8},
    {"appsupport.cplogd"},
    {"apsd.tcpdump.en0"},
    {"apsd.tcpdump.pdp_ip0"},
    {"aslmanager"},
    {"awdd", 6},
    {"coresymbolicationd", 5},
    {"crashreportcopymobile"},
    {"crash_mover"},
    {"DumpBasebandCrash"},
    {"DumpPanic"},
    {"iqagent", 4, 6},
    {"marcoagent", 7, 9},
    {"OTACrashCopier", 5},
    {"ReportCrash"},
    {"ReportCrash.DirectoryService", 4, 6},
    {"ReportCrash.Jetsam"},
    {"ReportCrash.SafetyNet", 5},
    {"ReportCrash.StackShot"},
    {.name = "sharktrace", .place = Place::library},
    {"syslog_relay"},
    {.name = "syslogd", .startsDisabled = true},
    {"CrashHousekeeping", 4, 8},
    {"chud.chum"},
    {.name = "chud.pilotfish", .place = Place::libraryBackup},
    {"mobile.profile_janitor"},
    {"awd_ice3", 6, 7},
    {"OTAPKIAssetTool", 7},
    {"OTATaskingAgent", 8},
    {"softwareupdateservicesd", 5},
    {"mobile.softwareupdated", 5, 8},
    {"AOSNotification", 5},
    {"itunescloudd", 7},
    {"AddressBook"},
    {"assistivetouchd", 5},
    {"printd"},
    {"vibrationmanagerd", 4, 6},
    {.name = "searchd", .startsDisabled = true},
    {"search.appindexer", 5, 8},
    {"wapic", 6, 8},
    {"wifi.wapic", 9},
    {"AdminLite", 4, 6},
    {"backupd"},
    {"assistant.analyzer", 9},
    {"assistant_service", 5},
    {"assistantd", 5},
    {"scrod"},
    {"VoiceOverTouch"},
    {"voiced"},
    {"vsassetd", 7},
    {"accessoryd", 10},
    {"iap2d", 6},
    {"iapauthd", 4, 9},
    {"iaptransportd", 5, 9},
    {"iapd"},
    {.name = "midiserver-ios", .place = Place::both},
    {"mobile.accessory_device_arbitrator"},
    {"powerlog", 5},
    {"storage_mounter"},
    {"gamed"},
    {"passd", 6},
    {.name = "racoon", .place = Place::systemBackup},
    {"MobileInternetSharing"},
    {"twitterd", 5},
    {"weibod", 6},
    {"mobile.obliteration"},
    {"datamigrator"},
    {"healthd", 8},
    {"homed", 8},
    {"backboardd", 6},
    {"cfprefsd.xpc.daemon", 7},
    {"CommCenter"},
    {"configd"},
    {"SpringBoard"},
};

constexpr std::string_view prefix = "com.apple.";
constexpr std::string_view otherDaemon = "com.openssh.sshd";

constexpr std::string_view processes[] = {
    "launchd",     "backboardd",  "SpringBoard", "configd", "CommCenter", "MobileSafari", "Cydia",
    "MobileCydia", "Preferences", "cfprefsd",    "Atlas",   "Instagram",  "iFile_",       "sbreload"};

void addPropertyList(DeviceBuild& build, std::string_view folder, std::string_view label) {
    const std::string_view name = label.substr(label.rfind('.') + 1);
    build.add(
        fmt::format("{}/{}.plist", folder, label),
        platform::Dictionary{{"Label", label},
                             {"ProgramArguments", platform::Array{fmt::format("/usr/libexec/{}", name)}},
                             {"RunAtLoad", true},
                             {"UserName", "root"}});
}

struct PlaceFolder {
    Place place;
    std::string_view folder;
};

constexpr PlaceFolder placeFolders[] = {
    {Place::system, "/System/Library/LaunchDaemons"},
    {Place::library, "/Library/LaunchDaemons"},
    {Place::both, "/System/Library/LaunchDaemons"},
    {Place::both, "/Library/LaunchDaemons"},
    {Place::systemBackup, "/System/Library/LaunchDaemonsBAK"},
    {Place::libraryBackup, "/Library/LaunchDaemonsBAK"},
};

void addDaemon(DeviceBuild& build, const std::string& label, Place place) {
    for (const PlaceFolder& row : placeFolders) {
        if (row.place == place) {
            addPropertyList(build, row.folder, label);
        }
    }
}

bool isSwitchedOff(const DaemonRow& row) {
    return row.startsDisabled || row.place == Place::systemBackup || row.place == Place::libraryBackup;
}

} // namespace

LaunchServices addDaemons(DeviceBuild& build) {
    LaunchServices services;
    const int major = build.generation.major;
    for (const DaemonRow& row : daemons) {
        if (major < row.since || major > row.until) {
            continue;
        }
        const std::string label = fmt::format("{}{}", prefix, row.name);
        addDaemon(build, label, row.place);
        services.running[label] = !isSwitchedOff(row);
        if (row.startsDisabled) {
            services.disabled[label] = true;
        }
    }
    addDaemon(build, std::string(otherDaemon), Place::library);
    services.running[std::string(otherDaemon)] = true;
    services.disabled["com.apple.mobile.lockdown_debug"] = false;
    return services;
}

std::vector<std::string> usualProcesses() {
    return {std::begin(processes), std::end(processes)};
}

} // namespace ozdevice
