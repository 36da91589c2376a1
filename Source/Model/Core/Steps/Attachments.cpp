#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"
#include "Model/Core/SuffixList.h"
#include "Model/Services/OZStdIO.h"

#include <utility>

#include <fmt/format.h>

// Attachments of messages: all of them, or those that the message database no longer knows.

using platform::FileType;
using platform::Result;

namespace {

using enum CleanupPrimitive;

constexpr uint64_t smartCleanup = 1;

constexpr std::string_view attachmentFolders[] = {
    "/var/mobile/Library/SMS/Attachments",
    "/var/mobile/Library/SMS/Parts",
};

constexpr CleanupAction allAttachmentsActions[] = {
    {.primitive = delFolderContents, .path = attachmentFolders[0]},
    {.primitive = delFolderContents, .path = attachmentFolders[1]},
};

// The files below a folder that lie in none of the known folders. A known folder is used up by its first hit.
Result<FoundPaths> unknownFilesBelow(TreeView& tree, std::string_view folder, SuffixList& known) {
    const std::string prefix = platform::pathPrefix(folder);
    return tree.findBelow(folder, [&](std::string_view path, FileType type) {
        if (known.take(std::string(prefix).append(path))) {
            return WalkDecision::passByWithContent;
        }
        return type == FileType::regular ? WalkDecision::take : WalkDecision::passBy;
    });
}

void cleanUnknownAttachments(CleanupRun& run) {
    const auto knownFolders = run.attachmentPathsFromSMSDatabase();
    if (!knownFolders) {
        run.print(fmt::format("\n{}An error occurred while reading the sms database. Skipping step...{}\n",
                              OZStdIO::red, OZStdIO::reset));
        run.log("\nAn error occurred while reading the sms database. Skipping step...\n");
        return;
    }
    SuffixList known(*knownFolders);
    std::vector<FoundPaths> unknown;
    for (const auto folder : attachmentFolders) {
        if (auto files = unknownFilesBelow(run.tree(), folder, known)) {
            unknown.push_back(std::move(*files));
        } else {
            run.noteUnreached(folder, files.error());
        }
    }
    for (const auto& files : unknown) {
        run.del(files);
    }
    for (const auto folder : attachmentFolders) {
        run.delEmptyDirs(folder);
    }
}

} // namespace

void cleanAttachments(const StepContext& context) {
    if (context.number(cleanupstep::attachments) == smartCleanup) {
        cleanUnknownAttachments(context.run);
    } else {
        context.run.perform(allAttachmentsActions);
    }
}
