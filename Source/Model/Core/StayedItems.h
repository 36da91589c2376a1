#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

/// How an item that stayed stands to the run's own count.
enum class StayedItem {
    /// The run had counted it before it tried.
    counted,
    /// The run counts only what goes.
    uncounted,
    /// It is part of an item that the run counts as one.
    part,
};

/// What a run should have removed, renamed or restored, and could not. Any thread may add. The paths of the
/// first ones are kept, as far as they fit into a few MiB; of the others there is the number.
class StayedItems {
  public:
    static constexpr size_t mostPaths = 10'000;
    static constexpr size_t mostPathBytes = size_t{4} << 20U;

    /// A path that is there already is passed over. What is gone (ENOENT) has not stayed and is passed over.
    void add(std::string path, const std::error_code& reason, StayedItem kind);
    /// Keeps the first reason.
    void addFailedSearch(std::string reason);
    void clear();

    // To be asked when nobody adds any more.
    [[nodiscard]] bool empty() const { return _count == 0 && !_failedSearch; }
    /// Why a search was not made in full, whose finds nobody knows; none where all were.
    [[nodiscard]] const std::optional<std::string>& failedSearch() const { return _failedSearch; }
    /// One line for people: how many of the run's items stayed, and the commonest reason; none where nothing
    /// did. `counted` is the run's own count.
    [[nodiscard]] std::optional<std::string> sentence(uint64_t counted) const;
    /// The section of the log: a heading, and each path behind its reason; empty where nothing stayed.
    [[nodiscard]] std::string section() const;

  private:
    void list(std::string path, const std::error_code& reason);

    std::mutex _mutex;
    uint64_t _count = 0;
    uint64_t _uncounted = 0;
    std::map<int, uint64_t> _reasons;
    struct Entry {
        // The set's own text.
        std::string_view path;
        int reason;
    };
    std::unordered_set<std::string> _paths;
    std::vector<Entry> _entries;
    size_t _pathBytes = 0;
    uint64_t _unlisted = 0;
    std::optional<std::string> _failedSearch;
};
