#include "Model/Items/Deletable/OZSortedItemList.h"

#include "Categories/TextFolding.h"
#include "Platform/Files/Error.h"

#include <algorithm>

#include <fmt/format.h>

OZDeletableItemList::Items& OZSortedItemList::items() {
    if (!_items) {
        reloadItems();
    }
    return *_items;
}

void OZSortedItemList::reloadItems() {
    _items.emplace();
    findItems();
}

void OZSortedItemList::addItem(std::shared_ptr<OZDeletableItem> item) {
    const auto place = std::ranges::upper_bound(
        items(), caseFoldedString(item->title()), {},
        [](const std::shared_ptr<OZDeletableItem>& other) { return caseFoldedString(other->title()); });
    items().insert(place, std::move(item));
}

std::shared_ptr<OZDeletableItem> OZSortedItemList::itemAtIndex(size_t index) {
    if (index >= items().size()) {
        throw platform::Exception("NSRangeException",
                                  fmt::format("there is no item {} in a list of {}", index, items().size()));
    }
    return items()[index];
}

void OZSortedItemList::deleteItemAtIndex(size_t index) {
    removeFromDevice(*itemAtIndex(index));
    items().erase(items().begin() + static_cast<std::ptrdiff_t>(index));
}
