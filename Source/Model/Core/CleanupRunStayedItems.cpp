#include "Model/Core/CleanupRun.h"
#include "Model/Core/RunRecord.h"

#include <functional>

// Items that a run could not remove, rename or restore.

using platform::Item;

namespace {

// The log's other paths may be relative to a directory that it names; these stand alone.
std::string absolutePath(const platform::FileManager& files, std::string_view path) {
    if (path.starts_with('/')) {
        return std::string(path);
    }
    if (path.starts_with("./")) {
        path.remove_prefix(2);
    }
    return platform::joinPath(files.currentDirectoryPath(), path);
}

} // namespace

platform::Result<void> CleanupRun::removeItem(const Item& item, std::string_view path, StayedItem kind) {
    const auto noteBelow = [&](const std::string& below, const std::error_code& reason) {
        noteStayed(platform::joinPath(path, below), reason,
                   kind == StayedItem::counted ? StayedItem::counted : StayedItem::part);
    };
    // Most items are files that go: no handler is to be made for them anew.
    auto removed = item.remove(std::ref(noteBelow));
    if (!removed) {
        noteStayed(path, removed.error(), kind);
    }
    // A folder seen from inside is refused as a whole.
    if (!removed && kind == StayedItem::counted && item.name() == ".") {
        noteStayedBelow(item, path, removed.error());
    }
    return removed;
}

void CleanupRun::noteStayed(std::string_view path, const std::error_code& reason, StayedItem kind) {
    _record.stayedItems().add(absolutePath(_files, path), reason, kind);
}

void CleanupRun::noteStayedBelow(const Item& folder, std::string_view path, const std::error_code& reason) {
    const auto enumerator = folder.enumerate();
    while (const auto entry = enumerator ? enumerator->nextObject() : std::nullopt) {
        noteStayed(platform::joinPath(path, *entry), reason, StayedItem::counted);
    }
}

// Where a link or a file stands on the way by now, what was found is gone.
bool CleanupRun::leadsNowhere(const std::error_code& reason) {
    return platform::meansAbsence(reason) || reason == std::errc::too_many_symbolic_link_levels ||
           reason == std::errc::filename_too_long;
}

void CleanupRun::noteUnreached(std::string_view path, const std::error_code& reason) {
    if (_mode != OZCoreMode::analyze && !leadsNowhere(reason)) {
        noteStayed(path, reason, StayedItem::uncounted);
    }
}
