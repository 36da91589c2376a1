#include "Model/Core/CleanupRun.h"

#include "Model/Core/MessageDatabase.h"
#include "Model/Core/RunRecord.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

namespace {

constexpr double foundationVersionOfAttachmentTable = ios::v6_0;

std::optional<std::string_view> firstOf(std::span<const std::string_view> patterns) {
    return patterns.empty() ? std::nullopt : std::optional(patterns.front());
}

} // namespace

CleanupRun::CleanupRun(platform::Device& device, RunRecord& record, OZCoreMode mode)
    : _device(device)
    , _record(record)
    , _mode(mode)
    , _files(device.fileManager())
    , _tree(device.fileManager()) {}

std::optional<CleanupRun::Paths> CleanupRun::attachmentPathsFromSMSDatabase() {
    const bool isNewer = _device.facts().foundationVersion >= foundationVersionOfAttachmentTable;
    return MessageDatabase(_files, isNewer ? "attachment" : "madrid_attachment").attachmentFolders();
}

void CleanupRun::perform(std::span<const CleanupAction> actions) {
    for (const auto& action : actions) {
        if (_device.facts().foundationVersion >= action.belowFoundationVersion) {
            continue;
        }
        switch (action.primitive) {
        case CleanupPrimitive::del:
            del(Paths{std::string(action.path)});
            break;
        case CleanupPrimitive::delr:
            delr(Paths{std::string(action.path)});
            break;
        case CleanupPrimitive::delFolderContents:
            delFolderContents(action.path, action.onlyFiles);
            break;
        case CleanupPrimitive::delFilesInFolderRecursive:
            delFilesInFolderRecursive(action.path);
            break;
        case CleanupPrimitive::delFilesExcludingPatternsRecursive:
            delFilesExcludingPatternsRecursive(action.path, action.patterns);
            break;
        case CleanupPrimitive::delWithPattern:
            delWithPattern(action.path, firstOf(action.patterns.startPatterns),
                           firstOf(action.patterns.middlePatterns), firstOf(action.patterns.endPatterns),
                           action.onlyFiles);
            break;
        case CleanupPrimitive::delWithPatterns:
            delWithPatterns(action.path, action.patterns, action.onlyFiles);
            break;
        }
    }
}

void CleanupRun::performInDirectory(const CleanupGroup& group) {
    if (changeDir(group.directory)) {
        perform(group.actions);
    }
}

bool CleanupRun::changeDir(std::string_view path) {
    if (const auto changed = _files.changeCurrentDirectoryPath(path); !changed) {
        noteUnreached(path, changed.error());
        return false;
    }
    log(std::string("\n##\nIn dir: ").append(path).append("\n##\n\n"));
    return true;
}

void CleanupRun::log(std::string_view text) {
    _record.log(text);
}

void CleanupRun::print(std::string_view text) const {
    _record.print(text);
}

void CleanupRun::printAndLog(std::string_view text) {
    print(text);
    log(text);
}
