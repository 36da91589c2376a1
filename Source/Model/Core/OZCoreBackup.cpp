#include "Model/Core/OZCoreRun.h"
#include "Platform/Device.h"

using platform::FileWriting;

// The tree is the only index of backups: whatever has the extension is one.

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

// What is inside of a restored folder is no longer where the search has seen it, and waits for the next call.
void OZCore::restore(const platform::FoundPaths& backups) {
    for (size_t index = 0; index < backups.names.size(); ++index) {
        if (const auto item = itemBelow(backups.folder, backups.names[index])) {
            restoreItem(*item, backups.path(index));
        }
        // The folder found last is that of the item, which none of its entries takes along, or else an older
        // one.
        if (!backups.names[index].contains('/')) {
            forgetLastFolder();
        }
    }
    forgetLastFolder();
}

void OZCore::restoreItem(const platform::Item& backup, std::string_view path) {
    std::string oldName(backup.name());
    oldName.resize(oldName.size() - backupExtension.size());
    // A file that somebody has named like the extension alone is nobody's backup.
    if (!oldName.empty() && backup.renameReplacing(oldName)) {
        count(path.substr(0, path.size() - backupExtension.size()));
    }
}
