#include "Categories/NSStringAdditions.h"
#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCoreRun.h"
#include "Model/Services/OZStdIO.h"

#include <fmt/format.h>

// Files by their extension, wherever they are, and the user's own files and folders.

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

} // namespace

void OZCore::cleanFileTypes(const Run& run) {
    const auto& fileTypes = _choices.fileTypes();
    if (fileTypes.empty()) {
        print(fmt::format("\n{}No filetypes specified. Skipping step...{}\n", OZStdIO::red, OZStdIO::reset));
        log("\nNo filetypes specified. Skipping step...\n");
        return;
    }
    // Without an inventory nobody knows which applications are to be spared.
    if (!knowsApplications()) {
        return;
    }
    std::vector<std::string> arguments = {"/", "-regextype", "posix-extended"};
    if (const auto patterns = prunePatterns(run); !patterns.empty()) {
        arguments.insert(arguments.end(),
                         {"-regex", fmt::format("{}", fmt::join(patterns, "|")), "-prune", "-o"});
    }
    arguments.insert(arguments.end(), {"-regex", fmt::format("^.*\\.({})$", fmt::join(fileTypes, "|")),
                                       "-type", "f", "-print"});
    quickDelFound(arguments);
}

// Folders that the search passes by.
std::vector<std::string> OZCore::prunePatterns(const Run& run) const {
    std::vector<std::string> patterns;
    if (run.isOn(cleanupstep::applications)) {
        if (const auto names = excludedFolderNames(_appList); !names.empty()) {
            patterns.push_back(fmt::format("^.*/({})$", fmt::join(names, "|")));
        }
    } else {
        patterns.push_back(fmt::format("^(/private)?({})$", fmt::join(containerDirectories(_appList), "|")));
    }
    if (_mode == OZCoreMode::analyze) {
        patterns.insert(patterns.end(), std::begin(countedFolders), std::end(countedFolders));
    }
    return patterns;
}

void OZCore::cleanCustomFiles(const Run& /*run*/) {
    for (const auto& record : _choices.customFiles()) {
        cleanCustomFile(record);
    }
}
