// Backups that test runs have left.
#include "Model/Core/CleanupRun.h"

#include <algorithm>
#include <numeric>

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

// A backup inside of a folder that is itself a backup is reached by the path that the search has seen, as
// long as that folder waits for it.
void CleanupRun::restore(const FoundPaths& backups) {
    for (const size_t index : deepestFirst(backups.names)) {
        if (const auto item = _files.itemBelow(backups._folder, backups.names[index])) {
            restoreItem(*item, backups.path(index));
        } else {
            noteUnreached(backups.path(index), item.error());
        }
    }
    _files.forgetLastFolder();
}

void CleanupRun::restoreItem(const platform::Item& backup, std::string_view path) {
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
