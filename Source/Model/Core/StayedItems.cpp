#include "Model/Core/StayedItems.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace {

constexpr std::string_view heading = "\nItems that stayed\n#################\n\n";

std::string inWords(int reason) {
    return std::system_category().message(reason);
}

} // namespace

void StayedItems::add(std::string path, const std::error_code& reason, StayedItem kind) {
    if (reason == std::errc::no_such_file_or_directory) {
        return;
    }
    const std::lock_guard lock(_mutex);
    // Two steps may name one item.
    if (_paths.contains(path)) {
        return;
    }
    if (kind != StayedItem::part) {
        ++_count;
        ++_reasons[reason.value()];
    }
    if (kind == StayedItem::uncounted) {
        ++_uncounted;
    }
    list(std::move(path), reason);
}

void StayedItems::list(std::string path, const std::error_code& reason) {
    if (_paths.size() == mostPaths || _pathBytes + path.size() > mostPathBytes) {
        ++_unlisted;
        return;
    }
    _pathBytes += path.size();
    _entries.push_back({.path = *_paths.insert(std::move(path)).first, .reason = reason.value()});
}

void StayedItems::addFailedSearch(std::string reason) {
    const std::lock_guard lock(_mutex);
    if (!_failedSearch) {
        _failedSearch = std::move(reason);
    }
}

void StayedItems::clear() {
    _failedSearch.reset();
    _count = _uncounted = _unlisted = 0;
    _pathBytes = 0;
    _reasons.clear();
    _entries.clear();
    _paths.clear();
}

std::optional<std::string> StayedItems::sentence(uint64_t counted) const {
    if (_count == 0) {
        return std::nullopt;
    }
    const auto commonest = std::ranges::max_element(_reasons, {}, [](const auto& row) { return row.second; });
    return fmt::format("{} of {} items stayed{}: {}.", _count, std::max(counted + _uncounted, _count),
                       _reasons.size() > 1 ? ", most often for this reason" : "", inWords(commonest->first));
}

std::string StayedItems::section() const {
    if (_entries.empty() && _unlisted == 0) {
        return {};
    }
    std::string text(heading);
    for (const auto& [path, reason] : _entries) {
        text.append(inWords(reason)).append(": ").append(path).append("\n\n");
    }
    if (_unlisted > 0) {
        text += fmt::format("... and {} more\n\n", _unlisted);
    }
    return text;
}
