#include "Model/Core/SizeSum.h"

#include <utility>

using platform::Item;

namespace {

constexpr size_t mostItems = 1024;
constexpr size_t mostFolders = 8;
// Fewer are read sooner than a thread wakes up.
constexpr size_t fewItems = 64;

uint64_t sumOf(const std::vector<Item>& items) {
    uint64_t sum = 0;
    for (const auto& item : items) {
        const auto attributes = item.attributes();
        sum += attributes ? attributes->size : 0;
    }
    return sum;
}

} // namespace

void SizeSum::add(Item item) {
    if (_items.empty() || _items.back().parent() != item.parent()) {
        ++_folders;
    }
    _items.push_back(std::move(item));
    if (_items.size() == mostItems || _folders == mostFolders) {
        handOver();
    }
}

uint64_t SizeSum::total() {
    _sum += sumOf(_items);
    _items.clear();
    _folders = 0;
    _work.finish();
    return _sum;
}

void SizeSum::handOver() {
    auto items = std::exchange(_items, {});
    _folders = 0;
    if (items.size() <= fewItems) {
        _sum += sumOf(items);
    } else {
        _work.add([this, items = std::move(items)] { _sum += sumOf(items); });
    }
}
