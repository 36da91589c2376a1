#pragma once

#include <limits>
#include <string_view>

/// A launch daemon that can be switched, by its launch label, on platforms whose `NSFoundationVersionNumber`
/// keeps both bounds.
struct OZDaemonTableEntry {
    std::string_view identifier;
    double atMost = std::numeric_limits<double>::infinity();
    double below = std::numeric_limits<double>::infinity();
};

struct OZDaemonGroupTableEntry {
    std::string_view identifier;
    std::string_view titleKey;
    std::string_view descriptionKey;
    /// Up to the first one without an identifier.
    OZDaemonTableEntry daemons[25];
};

/// All that can be switched: no other daemon can.
inline constexpr OZDaemonGroupTableEntry daemonGroupTable[] = {
    {"safe",
     "SAFEDAEMONLBL",
     "SAFEDAEMONMSG",
     {{"com.apple.appleprofilepolicyd"}, {"com.apple.certui.relay"}, {"com.apple.SpringBoard.SetupHelper"}}},
    {"log",
     "LOGDAEMONLBL",
     "LOGDAEMONMSG",
     {
         {"com.apple.appsupport.cplogd"},
         {"com.apple.apsd.tcpdump.en0"},
         {"com.apple.apsd.tcpdump.pdp_ip0"},
         {"com.apple.aslmanager"},
         {"com.apple.awdd"},
         {"com.apple.coresymbolicationd"},
         {"com.apple.crashreportcopymobile"},
         {"com.apple.crash_mover"},
         {"com.apple.DumpBasebandCrash"},
         {"com.apple.DumpPanic"},
         {"com.apple.iqagent"},
         {"com.apple.marcoagent"},
         {"com.apple.OTACrashCopier"},
         {"com.apple.ReportCrash"},
         {"com.apple.ReportCrash.DirectoryService"},
         {"com.apple.ReportCrash.Jetsam"},
         {"com.apple.ReportCrash.SafetyNet"},
         {"com.apple.ReportCrash.StackShot"},
         {"com.apple.sharktrace"},
         {"com.apple.syslog_relay"},
         {"com.apple.syslogd"},
         {.identifier = "com.apple.CrashHousekeeping", .atMost = 1141.1},
     }},
    {"dev",
     "DEVDAEMONLBL",
     "DEVDAEMONMSG",
     {{"com.apple.chud.chum"}, {"com.apple.chud.pilotfish"}, {"com.apple.mobile.profile_janitor"}}},
    {"ota",
     "OTADAEMONLBL",
     "OTADAEMONMSG",
     {
         {"com.apple.awd_ice3"},
         {"com.apple.OTAPKIAssetTool"},
         {"com.apple.OTATaskingAgent"},
         {"com.apple.softwareupdateservicesd"},
         {.identifier = "com.apple.mobile.softwareupdated", .below = 1140.11},
     }},
    {"icloud",
     "ICLOUDDAEMONLBL",
     "ICLOUDDAEMONMSG",
     {{"com.apple.AOSNotification"}, {"com.apple.itunescloudd"}}},
    {"addbook", "ADDBOOKDAEMONLBL", "ADDBOOKDAEMONMSG", {{"com.apple.AddressBook"}}},
    {"asstouch", "ASSTOUCHDAEMONLBL", "ASSTOUCHDAEMONMSG", {{"com.apple.assistivetouchd"}}},
    {"airprint", "AIRPRINTDAEMONLBL", "AIRPRINTDAEMONMSG", {{"com.apple.printd"}}},
    {"vib", "VIBDAEMONLBL", "VIBDAEMONMSG", {{"com.apple.vibrationmanagerd"}}},
    {"splight",
     "SPLIGHTDAEMONLBL",
     "SPLIGHTDAEMONMSG",
     {{"com.apple.searchd"}, {"com.apple.search.appindexer"}}},
    {"chiwlan", "CHIWLANDAEMONLBL", "CHIWLANDAEMONMSG", {{"com.apple.wapic"}, {"com.apple.wifi.wapic"}}},
    {"admlite", "ADMLITEDAEMONLBL", "ADMLITEDAEMONMSG", {{"com.apple.AdminLite"}}},
    {"backup", "BACKUPDAEMONLBL", "BACKUPDAEMONMSG", {{"com.apple.backupd"}}},
    {"voice",
     "VOICEDAEMONLBL",
     "VOICEDAEMONMSG",
     {
         {"com.apple.assistant.analyzer"},
         {"com.apple.assistant_service"},
         {"com.apple.assistantd"},
         {"com.apple.scrod"},
         {"com.apple.VoiceOverTouch"},
         {"com.apple.voiced"},
         {"com.apple.vsassetd"},
     }},
    {"access",
     "ACCESSDAEMONLBL",
     "ACCESSDAEMONMSG",
     {
         {"com.apple.accessoryd"},
         {"com.apple.iap2d"},
         {"com.apple.iapauthd"},
         {"com.apple.iaptransportd"},
         {"com.apple.iapd"},
         {"com.apple.midiserver-ios"},
         {"com.apple.mobile.accessory_device_arbitrator"},
         {"com.apple.powerlog"},
         {"com.apple.storage_mounter"},
     }},
    {"game", "GAMEDAEMONLBL", "GAMEDAEMONMSG", {{"com.apple.gamed"}}},
    {"passbook", "PASSBOOKDAEMONLBL", "PASSBOOKDAEMONMSG", {{"com.apple.passd"}}},
    {"vpn", "VPNDAEMONLBL", "VPNDAEMONMSG", {{"com.apple.racoon"}}},
    {"tether", "TETHERDAEMONLBL", "TETHERDAEMONMSG", {{"com.apple.MobileInternetSharing"}}},
    {"twitter", "TWITTERDAEMONLBL", "TWITTERDAEMONMSG", {{"com.apple.twitterd"}}},
    {"weibo", "WEIBODAEMONLBL", "WEIBODAEMONMSG", {{"com.apple.weibod"}}},
    {"wipe", "WIPEDAEMONLBL", "WIPEDAEMONMSG", {{"com.apple.mobile.obliteration"}}},
    {"datamig", "DATAMIGDAEMONLBL", "DATAMIGDAEMONMSG", {{"com.apple.datamigrator"}}},
    {"health", "HEALTHDAEMONLBL", "HEALTHDAEMONMSG", {{"com.apple.healthd"}}},
    {"home", "HOMEKITDAEMONLBL", "HOMEKITDAEMONMSG", {{"com.apple.homed"}}},
};
