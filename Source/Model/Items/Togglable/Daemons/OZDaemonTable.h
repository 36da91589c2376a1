#pragma once

#include "Platform/Device/Generations.h"

#include <limits>
#include <string_view>

/// The `NSFoundationVersionNumber` of the platforms that a daemon is switched on.
struct OZVersionBounds {
    double atMost = std::numeric_limits<double>::infinity();
    double below = std::numeric_limits<double>::infinity();

    [[nodiscard]] constexpr bool contain(double version) const {
        return version <= atMost && version < below;
    }
};

/// A launch daemon that can be switched, by its launch label.
struct OZDaemonTableEntry {
    constexpr OZDaemonTableEntry() = default;
    constexpr OZDaemonTableEntry(const char* launchLabel, OZVersionBounds versionBounds = {})
        : identifier(launchLabel)
        , bounds(versionBounds) {}

    std::string_view identifier;
    OZVersionBounds bounds;
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
    {.identifier = "safe",
     .titleKey = "SAFEDAEMONLBL",
     .descriptionKey = "SAFEDAEMONMSG",
     .daemons = {"com.apple.appleprofilepolicyd", "com.apple.certui.relay",
                 "com.apple.SpringBoard.SetupHelper"}},
    {.identifier = "log",
     .titleKey = "LOGDAEMONLBL",
     .descriptionKey = "LOGDAEMONMSG",
     .daemons =
         {
             "com.apple.appsupport.cplogd",
             "com.apple.apsd.tcpdump.en0",
             "com.apple.apsd.tcpdump.pdp_ip0",
             "com.apple.aslmanager",
             "com.apple.awdd",
             "com.apple.coresymbolicationd",
             "com.apple.crashreportcopymobile",
             "com.apple.crash_mover",
             "com.apple.DumpBasebandCrash",
             "com.apple.DumpPanic",
             "com.apple.iqagent",
             "com.apple.marcoagent",
             "com.apple.OTACrashCopier",
             "com.apple.ReportCrash",
             "com.apple.ReportCrash.DirectoryService",
             "com.apple.ReportCrash.Jetsam",
             "com.apple.ReportCrash.SafetyNet",
             "com.apple.ReportCrash.StackShot",
             "com.apple.sharktrace",
             "com.apple.syslog_relay",
             "com.apple.syslogd",
             {"com.apple.CrashHousekeeping", {.atMost = ios::v8_1}},
         }},
    {.identifier = "dev",
     .titleKey = "DEVDAEMONLBL",
     .descriptionKey = "DEVDAEMONMSG",
     .daemons = {"com.apple.chud.chum", "com.apple.chud.pilotfish", "com.apple.mobile.profile_janitor"}},
    {.identifier = "ota",
     .titleKey = "OTADAEMONLBL",
     .descriptionKey = "OTADAEMONMSG",
     .daemons =
         {
             "com.apple.awd_ice3",
             "com.apple.OTAPKIAssetTool",
             "com.apple.OTATaskingAgent",
             "com.apple.softwareupdateservicesd",
             {"com.apple.mobile.softwareupdated", {.below = ios::v8_0}},
         }},
    {.identifier = "icloud",
     .titleKey = "ICLOUDDAEMONLBL",
     .descriptionKey = "ICLOUDDAEMONMSG",
     .daemons = {"com.apple.AOSNotification", "com.apple.itunescloudd"}},
    {.identifier = "addbook",
     .titleKey = "ADDBOOKDAEMONLBL",
     .descriptionKey = "ADDBOOKDAEMONMSG",
     .daemons = {"com.apple.AddressBook"}},
    {.identifier = "asstouch",
     .titleKey = "ASSTOUCHDAEMONLBL",
     .descriptionKey = "ASSTOUCHDAEMONMSG",
     .daemons = {"com.apple.assistivetouchd"}},
    {.identifier = "airprint",
     .titleKey = "AIRPRINTDAEMONLBL",
     .descriptionKey = "AIRPRINTDAEMONMSG",
     .daemons = {"com.apple.printd"}},
    {.identifier = "vib",
     .titleKey = "VIBDAEMONLBL",
     .descriptionKey = "VIBDAEMONMSG",
     .daemons = {"com.apple.vibrationmanagerd"}},
    {.identifier = "splight",
     .titleKey = "SPLIGHTDAEMONLBL",
     .descriptionKey = "SPLIGHTDAEMONMSG",
     .daemons = {"com.apple.searchd", "com.apple.search.appindexer"}},
    {.identifier = "chiwlan",
     .titleKey = "CHIWLANDAEMONLBL",
     .descriptionKey = "CHIWLANDAEMONMSG",
     .daemons = {"com.apple.wapic", "com.apple.wifi.wapic"}},
    {.identifier = "admlite",
     .titleKey = "ADMLITEDAEMONLBL",
     .descriptionKey = "ADMLITEDAEMONMSG",
     .daemons = {"com.apple.AdminLite"}},
    {.identifier = "backup",
     .titleKey = "BACKUPDAEMONLBL",
     .descriptionKey = "BACKUPDAEMONMSG",
     .daemons = {"com.apple.backupd"}},
    {.identifier = "voice",
     .titleKey = "VOICEDAEMONLBL",
     .descriptionKey = "VOICEDAEMONMSG",
     .daemons = {"com.apple.assistant.analyzer", "com.apple.assistant_service", "com.apple.assistantd",
                 "com.apple.scrod", "com.apple.VoiceOverTouch", "com.apple.voiced", "com.apple.vsassetd"}},
    {.identifier = "access",
     .titleKey = "ACCESSDAEMONLBL",
     .descriptionKey = "ACCESSDAEMONMSG",
     .daemons = {"com.apple.accessoryd", "com.apple.iap2d", "com.apple.iapauthd", "com.apple.iaptransportd",
                 "com.apple.iapd", "com.apple.midiserver-ios", "com.apple.mobile.accessory_device_arbitrator",
                 "com.apple.powerlog", "com.apple.storage_mounter"}},
    {.identifier = "game",
     .titleKey = "GAMEDAEMONLBL",
     .descriptionKey = "GAMEDAEMONMSG",
     .daemons = {"com.apple.gamed"}},
    {.identifier = "passbook",
     .titleKey = "PASSBOOKDAEMONLBL",
     .descriptionKey = "PASSBOOKDAEMONMSG",
     .daemons = {"com.apple.passd"}},
    {.identifier = "vpn",
     .titleKey = "VPNDAEMONLBL",
     .descriptionKey = "VPNDAEMONMSG",
     .daemons = {"com.apple.racoon"}},
    {.identifier = "tether",
     .titleKey = "TETHERDAEMONLBL",
     .descriptionKey = "TETHERDAEMONMSG",
     .daemons = {"com.apple.MobileInternetSharing"}},
    {.identifier = "twitter",
     .titleKey = "TWITTERDAEMONLBL",
     .descriptionKey = "TWITTERDAEMONMSG",
     .daemons = {"com.apple.twitterd"}},
    {.identifier = "weibo",
     .titleKey = "WEIBODAEMONLBL",
     .descriptionKey = "WEIBODAEMONMSG",
     .daemons = {"com.apple.weibod"}},
    {.identifier = "wipe",
     .titleKey = "WIPEDAEMONLBL",
     .descriptionKey = "WIPEDAEMONMSG",
     .daemons = {"com.apple.mobile.obliteration"}},
    {.identifier = "datamig",
     .titleKey = "DATAMIGDAEMONLBL",
     .descriptionKey = "DATAMIGDAEMONMSG",
     .daemons = {"com.apple.datamigrator"}},
    {.identifier = "health",
     .titleKey = "HEALTHDAEMONLBL",
     .descriptionKey = "HEALTHDAEMONMSG",
     .daemons = {"com.apple.healthd"}},
    {.identifier = "home",
     .titleKey = "HOMEKITDAEMONLBL",
     .descriptionKey = "HOMEKITDAEMONMSG",
     .daemons = {"com.apple.homed"}},
};
