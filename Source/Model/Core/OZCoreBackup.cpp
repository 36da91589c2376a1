#include "Model/Core/OZCoreRun.h"
#include "Platform/Device.h"

#include <algorithm>
#include <numeric>

using platform::FileWriting;

// The tree is the only index of backups: whatever has the extension is one.

namespace {

// The indexes of paths; those of one depth stay in their order.
std::vector<size_t> deepestFirst(const std::vector<std::string>& paths) {
    std::vector<ptrdiff_t> depths;
    depths.reserve(paths.size());
    for (const auto& path : paths) {
        depths.push_back(std::ranges::count(path, '/'));
    }
    std::vector<size_t> order(paths.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::ranges::stable_sort(order, std::ranges::greater(), [&](size_t index) { return depths[index]; });
    return order;
}

} // namespace

void OZCore::backup(BackupAction action) {
    const bool restores = action == BackupAction::restore;
    std::ignore = restores ? beginRun(OZCoreMode::clean, runtitle::restoredFiles, FileWriting::gathered)
                           : beginRun(OZCoreMode::clean, runtitle::deletedFiles, FileWriting::direct);
    log("\n");
    const auto backups = find({"/", "-name", std::string("*").append(backupExtension)});
    if (restores) {
        restore(backups);
        endRun(std::nullopt);
    } else {
        const uint64_t freeAtStart = _device.volumes().totalFreeSpace();
        quickDel(backups);
        endRun(freeAtStart);
    }
}

// A backup inside of a folder that is itself a backup is reached by the path that the search has seen, as
// long as that folder waits for it.
void OZCore::restore(const platform::FoundPaths& backups) {
    for (const size_t index : deepestFirst(backups.names)) {
        if (const auto item = itemBelow(backups.folder, backups.names[index])) {
            restoreItem(*item, backups.path(index));
        } else {
            noteUnreached(backups.path(index), item.error());
        }
    }
    forgetLastFolder();
}

void OZCore::restoreItem(const platform::Item& backup, std::string_view path) {
    std::string oldName(backup.name());
    oldName.resize(oldName.size() - backupExtension.size());
    // A file that somebody has named like the extension alone is nobody's backup.
    if (oldName.empty()) {
        return;
    }
    if (const auto restored = backup.renameReplacing(oldName)) {
        count(path.substr(0, path.size() - backupExtension.size()));
    } else {
        noteUnreached(path, restored.error());
    }
}
