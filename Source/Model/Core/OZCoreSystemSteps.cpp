#include "Model/Core/CleanupAction.h"
#include "Model/Core/OZCore.h"

// The steps that need nothing but their tables: downloaded system updates and temporary files.

namespace {

using enum CleanupPrimitive;

// One letter short of "SoftwareUpdate" for names that go on differently behind it.
constexpr std::string_view softwareUpdateAssets[] = {"com_apple_MobileAsset_SoftwareUpdat"};
constexpr std::string_view softwareUpdateDownloads[] = {"com_apple_MobileAsset_SoftwareUpdate"};

constexpr CleanupAction otaUpdateActions[] = {
    {.primitive = delFolderContents, .path = "/var/MobileSoftwareUpdate"},
    {.primitive = delFolderContents, .path = "/var/mobile/MobileSoftwareUpdate"},
    {.primitive = delWithPatterns,
     .path = "/var/mobile/Library/Assets",
     .patterns = {.startPatterns = softwareUpdateAssets}},
    {.primitive = delWithPatterns,
     .path = "/var/MobileAsset/Assets",
     .patterns = {.startPatterns = softwareUpdateDownloads}},
};

constexpr std::string_view temporaryLogs[] = {"log"};
// What running services and jailbreaks keep in the folder and look for again.
constexpr std::string_view temporaryFilesInUse[] = {"sock",           "sshstate",       "SpringBoard_reboot_flag",
                                                    ".iomfgamma.dat", ".pangu93loaded", "jailbreakd.pid"};
constexpr std::string_view temporaryFilesInUseMiddle[] = {"blued"};

constexpr CleanupAction tempFileActions[] = {
    {.primitive = delWithPatterns, .path = "/var/tmp", .patterns = {.startPatterns = temporaryLogs}},
    {.primitive = delFilesExcludingPatternsRecursive,
     .path = "/var/tmp",
     .patterns = {.exactMatches = temporaryFilesInUse, .middlePatterns = temporaryFilesInUseMiddle}},
    {.primitive = delFolderContents, .path = "/var/spool/mdt"},
    {.primitive = delFolderContents, .path = "/var/mobile/Media/ApplicationArchives"},
};

} // namespace

void OZCore::cleanOTAUpdates(const Run& /*run*/) { perform(otaUpdateActions); }

void OZCore::cleanTempFiles(const Run& /*run*/) { perform(tempFileActions); }
