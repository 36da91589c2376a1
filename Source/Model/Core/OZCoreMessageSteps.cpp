#include "Model/Core/CleanupAction.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/MessageDatabase.h"
#include "Model/Core/OZCoreRun.h"
#include "Model/Core/SuffixList.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device.h"

#include <fmt/format.h>

// Attachments of messages: all of them, or those that the message database no longer knows.

using platform::FileType;
using platform::FoundPaths;
using platform::Item;

namespace {

using enum CleanupPrimitive;

constexpr uint64_t smartCleanup = 1;
constexpr double foundationVersionOfAttachmentTable = 992.0;

constexpr std::string_view attachmentFolders[] = {
    "/var/mobile/Library/SMS/Attachments",
    "/var/mobile/Library/SMS/Parts",
};

constexpr CleanupAction allAttachmentsActions[] = {
    {.primitive = delFolderContents, .path = attachmentFolders[0]},
    {.primitive = delFolderContents, .path = attachmentFolders[1]},
};

// The files below a folder that lie in none of the known folders. A known folder is used up by its first hit.
FoundPaths unknownFilesBelow(platform::FileManager& fileManager, std::string_view folder, SuffixList& known) {
    FoundPaths unknown{.folder = nullptr, .prefix = platform::pathPrefix(folder), .names = {}};
    auto opened = fileManager.folderAtPath(folder);
    const auto enumerator = opened ? Item(*opened, ".").enumerate() : nullptr;
    if (!enumerator) {
        return unknown;
    }
    unknown.folder = *opened;
    while (const auto entry = enumerator->nextObject()) {
        if (known.take(std::string(unknown.prefix).append(*entry))) {
            enumerator->skipDescendants();
        } else if (enumerator->fileType() == FileType::regular) {
            unknown.names.emplace_back(*entry);
        }
    }
    return unknown;
}

} // namespace

void OZCore::cleanAttachments(const Run& run) {
    if (run.number(cleanupstep::attachments) == smartCleanup) {
        cleanUnknownAttachments();
    } else {
        perform(allAttachmentsActions);
    }
}

void OZCore::cleanUnknownAttachments() {
    const auto knownFolders = attachmentPathsFromSMSDatabase();
    if (!knownFolders) {
        print(fmt::format("\n{}An error occurred while reading the sms database. Skipping step...{}\n",
                          OZStdIO::red, OZStdIO::reset));
        log("\nAn error occurred while reading the sms database. Skipping step...\n");
        return;
    }
    SuffixList known(*knownFolders);
    std::vector<FoundPaths> unknown;
    for (const auto folder : attachmentFolders) {
        unknown.push_back(unknownFilesBelow(*this, folder, known));
    }
    for (const auto& files : unknown) {
        del(files);
    }
    for (const auto folder : attachmentFolders) {
        delEmptyDirs(folder);
    }
}

std::optional<OZCore::Paths> OZCore::attachmentPathsFromSMSDatabase() {
    const bool isNewer = _device.facts().foundationVersion >= foundationVersionOfAttachmentTable;
    return MessageDatabase(_device.fileManager(), isNewer ? "attachment" : "madrid_attachment")
        .attachmentFolders();
}
