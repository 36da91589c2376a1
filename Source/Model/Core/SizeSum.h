#pragma once

#include "Platform/Files/Folder.h"
#include "Platform/Threads/BackgroundWork.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Sums the sizes of entries, on several threads, while the walks that find them go on; what is gone by then
/// has none, so whoever removes something takes the total first. The items keep their folders open, so few
/// folders are handed over at once.
class SizeSum {
  public:
    /// The queue outlives it.
    explicit SizeSum(platform::Queue& queue)
        : _work(queue) {}

    void add(platform::Item item);
    /// Bytes, of all that was added so far.
    uint64_t total();

  private:
    void handOver();

    std::vector<platform::Item> _items;
    size_t _folders = 0;
    std::atomic<uint64_t> _sum = 0;
    // It ends before the sum that it adds to.
    platform::BackgroundWork _work;
};
