#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// Temporary files.

namespace {

using enum CleanupPrimitive;

constexpr std::string_view temporaryLogs[] = {"log"};
// What running services and jailbreaks keep in the folder and look for again.
constexpr std::string_view temporaryFilesInUse[] = {
    "sock", "sshstate", "SpringBoard_reboot_flag", ".iomfgamma.dat", ".pangu93loaded", "jailbreakd.pid"};
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

void cleanTempFiles(const StepContext& context) {
    context.run.perform(tempFileActions);
}
