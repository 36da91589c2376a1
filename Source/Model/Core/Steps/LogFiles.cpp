#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// Logs and crash reports.

using platform::FileType;

namespace {

using enum CleanupPrimitive;

constexpr std::string_view crashReporter = "/var/mobile/Library/Logs/CrashReporter";

constexpr CleanupAction mobileLogActions[] = {
    {.primitive = delFilesInFolderRecursive, .path = "/var/mobile/Library/Logs"},
};

constexpr CleanupAction systemLogActions[] = {
    {.primitive = delFilesInFolderRecursive, .path = "/var/logs"},
    {.primitive = delFilesInFolderRecursive, .path = "/var/log"},
    {.primitive = delFilesInFolderRecursive, .path = "/var/wireless/Library/Logs"},
};

// The folder's links stand for reports elsewhere, which go with their links.
void cleanLinkedCrashReports(CleanupRun& run) {
    auto& tree = run.tree();
    auto links = tree.findBelow(crashReporter, [](std::string_view /*path*/, FileType type) {
        return type == FileType::symbolicLink ? WalkDecision::take : WalkDecision::passBy;
    });
    if (!links) {
        run.noteUnreached(crashReporter, links.error());
        return;
    }
    // All links are resolved before the first one goes: one may lead to the next.
    CleanupRun::Paths reports;
    std::erase_if(links->names, [&](const std::string& name) {
        const std::string link = links->prefix + name;
        const auto report = tree.attributesOfTargetAtPath(link);
        if (report) {
            reports.push_back(tree.stringByResolvingSymlinksInPath(link));
        }
        // Without the link nobody would find the report again.
        const bool stays = !report && !CleanupRun::leadsNowhere(report.error());
        if (stays) {
            run.noteUnreached(link, report.error());
        }
        return stays;
    });
    run.removeLinks(*links);
    run.del(reports);
}

} // namespace

void cleanLogFiles(const StepContext& context) {
    context.run.perform(mobileLogActions);
    cleanLinkedCrashReports(context.run);
    context.run.perform(systemLogActions);
}
