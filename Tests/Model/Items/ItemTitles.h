#pragma once

#include "Model/Items/Deletable/OZDeletableItemList.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// The titles of a list's rows, in their order.
inline std::vector<std::string> titlesOf(OZDeletableItemList& list) {
    std::vector<std::string> titles;
    for (const auto& item : list.allItems()) {
        titles.push_back(item->title());
    }
    return titles;
}

/// Removes the first row with a title, as a user does who sees it.
inline void deleteRow(OZDeletableItemList& list, std::string_view title) {
    const auto items = list.allItems();
    const auto row = std::ranges::find(items, title, &OZDeletableItem::title);
    list.deleteItemAtIndex(static_cast<size_t>(row - items.begin()));
}

} // namespace tests
