#pragma once

#include "Platform/Device/Generations.h"

#include <array>
#include <string_view>

struct StepContext;

/// The thirteen sections of a cleanup. Keys are the settings' keys and the titles' localization keys.
namespace cleanupstep {

inline constexpr std::string_view attachments = "ATTACHMENTS";
inline constexpr std::string_view safari = "SAFARI";
inline constexpr std::string_view applications = "APPLICATIONS";
inline constexpr std::string_view otaUpdates = "OTAUPDATES";
inline constexpr std::string_view batteryData = "BATTERYDATA";
inline constexpr std::string_view cydia = "CYDIA";
inline constexpr std::string_view cydiaSources = "CYDIASOURCES";
inline constexpr std::string_view dependencies = "DEPENDENCIES";
inline constexpr std::string_view logFiles = "LOGFILES";
inline constexpr std::string_view cacheFiles = "CACHEFILES";
inline constexpr std::string_view tempFiles = "TEMPFILES";
inline constexpr std::string_view fileTypeCleanup = "FILETYPECLEANUP";
inline constexpr std::string_view customFiles = "CUSTOMFILES";

} // namespace cleanupstep

// What the sections do: "Steps" has a file for each.
void cleanAttachments(const StepContext& context);
void cleanSafari(const StepContext& context);
void cleanApplications(const StepContext& context);
void cleanOTAUpdates(const StepContext& context);
void cleanBatteryData(const StepContext& context);
void cleanCydia(const StepContext& context);
void cleanCydiaSources(const StepContext& context);
void cleanDependencies(const StepContext& context);
void cleanLogFiles(const StepContext& context);
void cleanCacheFiles(const StepContext& context);
void cleanTempFiles(const StepContext& context);
void cleanFileTypes(const StepContext& context);
void cleanCustomFiles(const StepContext& context);

enum class StepDefault { off, on };

struct CleanupStepDescription {
    std::string_view key;
    void (*clean)(const StepContext& context);
    StepDefault byDefault;
    /// The two "{}" take the colour of the dashes and the reset that ends it.
    std::string_view consoleHeading;
    std::string_view logHeading;
    /// The step is offered from this version of the platform on.
    double sinceFoundationVersion = 0;
};

/// In the order of the run, of the screens and of the menu.
inline constexpr std::array<CleanupStepDescription, 13> cleanupSteps{{
    {.key = cleanupstep::attachments,
     .clean = cleanAttachments,
     .byDefault = StepDefault::off,
     .consoleHeading = "\nMessage attachments...\n{}----------------------{}\n\n",
     .logHeading = "\nMessage attachments\n###################\n\n"},
    {.key = cleanupstep::safari,
     .clean = cleanSafari,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nSafari cache, cookies and history...\n{}------------------------------------{}\n\n",
     .logHeading = "\nSafari cache, cookies and history\n#################################\n\n"},
    {.key = cleanupstep::applications,
     .clean = cleanApplications,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nApplications...\n{}---------------{}\n\n",
     .logHeading = "\nApplications\n############\n\n"},
    {.key = cleanupstep::otaUpdates,
     .clean = cleanOTAUpdates,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nOTA software updates...\n{}-----------------------{}\n\n",
     .logHeading = "\nOTA software updates\n####################\n\n"},
    {.key = cleanupstep::batteryData,
     .clean = cleanBatteryData,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nBattery usage data...\n{}---------------------{}\n\n",
     .logHeading = "\nBattery usage data\n##################\n\n",
     .sinceFoundationVersion = ios::v8_0},
    {.key = cleanupstep::cydia,
     .clean = cleanCydia,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nCydia...\n{}--------{}\n\n",
     .logHeading = "\nCydia\n#####\n\n"},
    {.key = cleanupstep::cydiaSources,
     .clean = cleanCydiaSources,
     .byDefault = StepDefault::off,
     .consoleHeading = "\nCydia sources...\n{}----------------{}\n\n",
     .logHeading = "\nCydia sources\n#############\n\n"},
    {.key = cleanupstep::dependencies,
     .clean = cleanDependencies,
     .byDefault = StepDefault::off,
     .consoleHeading = "\nUnused dependencies...\n{}----------------------{}\n\n",
     .logHeading = "\nUnused dependencies\n###################\n\n"},
    {.key = cleanupstep::logFiles,
     .clean = cleanLogFiles,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nLog files...\n{}------------{}\n\n",
     .logHeading = "\nLog files\n#########\n\n"},
    {.key = cleanupstep::cacheFiles,
     .clean = cleanCacheFiles,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nCache files...\n{}--------------{}\n\n",
     .logHeading = "\nCache files\n###########\n\n"},
    {.key = cleanupstep::tempFiles,
     .clean = cleanTempFiles,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nTemporary files...\n{}------------------{}\n\n",
     .logHeading = "\nTemporary Files\n###############\n\n"},
    {.key = cleanupstep::fileTypeCleanup,
     .clean = cleanFileTypes,
     .byDefault = StepDefault::on,
     .consoleHeading = "\nFiletypes...\n{}------------{}\n\n",
     .logHeading = "\nFiletypes\n#########\n\n"},
    {.key = cleanupstep::customFiles,
     .clean = cleanCustomFiles,
     .byDefault = StepDefault::off,
     .consoleHeading = "\nCustom files and folders...\n{}---------------------------{}\n\n",
     .logHeading = "\nCustom files and folders\n########################\n\n"},
}};
