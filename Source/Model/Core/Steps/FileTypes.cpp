#include "Categories/Text.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"
#include "Model/Services/OZStdIO.h"

#include <fmt/format.h>

// Files by their extension, wherever they are.

namespace {

// What the steps before have counted, and only an analysis still finds there.
constexpr std::string_view countedFolders[] = {"^(/private)?/var/([Ll]ogs?|tmp)$", "^.*/Library/Logs$"};

// Names of the excluded applications' folders, for a pattern that finds them at any place.
std::vector<std::string> excludedFolderNames(const OZAppList& appList) {
    std::vector<std::string> names;
    for (const auto& path : appList.pathsForExcludedApps(OZExclusionMask::cleanup, OZAppTypeMask::user)) {
        if (const auto name = platform::lastPathComponent(path); !name.empty()) {
            names.push_back(stringByEscapingForRegex(name));
        }
    }
    return names;
}

std::vector<std::string> containerDirectories(const OZAppList& appList) {
    std::vector<std::string> directories;
    for (const auto& directory : {appList.userAppBundleContainerDir(), appList.userAppDataContainerDir(),
                                  appList.userGroupDataContainerDir()}) {
        if (directory) {
            directories.push_back(*directory);
        }
    }
    return directories;
}

// Folders that the search passes by.
std::vector<std::string> prunePatterns(const StepContext& context) {
    std::vector<std::string> patterns;
    if (context.isOn(cleanupstep::applications)) {
        if (const auto names = excludedFolderNames(context.appList); !names.empty()) {
            patterns.push_back(fmt::format("^.*/({})$", fmt::join(names, "|")));
        }
    } else {
        patterns.push_back(
            fmt::format("^(/private)?({})$", fmt::join(containerDirectories(context.appList), "|")));
    }
    return context.run.patternsToPrune(std::move(patterns), countedFolders);
}

} // namespace

void cleanFileTypes(const StepContext& context) {
    auto& run = context.run;
    const auto& fileTypes = context.choices.fileTypes();
    if (fileTypes.empty()) {
        run.print(
            fmt::format("\n{}No filetypes specified. Skipping step...{}\n", OZStdIO::red, OZStdIO::reset));
        run.log("\nNo filetypes specified. Skipping step...\n");
        return;
    }
    // Without an inventory nobody knows which applications are to be spared.
    if (!context.knowsApplications()) {
        return;
    }
    std::vector<std::string> arguments = {"/", "-regextype", "posix-extended"};
    if (const auto patterns = prunePatterns(context); !patterns.empty()) {
        arguments.insert(arguments.end(),
                         {"-regex", fmt::format("{}", fmt::join(patterns, "|")), "-prune", "-o"});
    }
    arguments.insert(arguments.end(), {"-regex", fmt::format("^.*\\.({})$", fmt::join(fileTypes, "|")),
                                       "-type", "f", "-print"});
    run.quickDelFound(arguments);
}
