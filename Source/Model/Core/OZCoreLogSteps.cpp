#include "Model/Core/CleanupAction.h"
#include "Model/Core/OZCore.h"

// Logs and crash reports.

using platform::FileType;
using platform::FoundPaths;
using platform::Item;

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

FoundPaths linksIn(platform::FileManager& fileManager, std::string_view folder) {
    FoundPaths links{.folder = nullptr, .prefix = platform::pathPrefix(folder), .names = {}};
    auto opened = fileManager.folderAtPath(folder);
    const auto enumerator = opened ? Item(*opened, ".").enumerate() : nullptr;
    if (!enumerator) {
        return links;
    }
    links.folder = *opened;
    while (const auto entry = enumerator->nextObject()) {
        if (enumerator->fileType() == FileType::symbolicLink) {
            links.names.emplace_back(*entry);
        }
    }
    return links;
}

} // namespace

void OZCore::cleanLogFiles(const Run& /*run*/) {
    perform(mobileLogActions);
    cleanLinkedCrashReports();
    perform(systemLogActions);
}

// The folder's links stand for reports elsewhere, which go with their links.
void OZCore::cleanLinkedCrashReports() {
    const FoundPaths links = linksIn(*this, crashReporter);
    // All links are resolved before the first one goes: one may lead to the next.
    Paths reports;
    for (size_t index = 0; index < links.names.size(); ++index) {
        const std::string link = links.path(index);
        if (fileExistsAtPath(link)) {
            reports.push_back(stringByResolvingSymlinksInPath(link));
        }
    }
    for (const auto& name : links.names) {
        const auto link = itemBelow(links.folder, name);
        const auto attributes = link ? link->attributes() : platform::failure(ENOENT);
        if (_mode == OZCoreMode::clean && attributes && attributes->type == FileType::symbolicLink) {
            std::ignore = removeItem(*link, std::string(links.prefix).append(name), StayedItem::uncounted);
        }
    }
    del(reports);
}
