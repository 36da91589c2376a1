#pragma once

#include "Model/Items/Deletable/OZDeletableItem.h"

#include <cstddef>
#include <memory>
#include <vector>

/// A list of things that can only be removed, one by one. It fills itself at its first use. To be used on the
/// main thread. An index that is beyond the list's end throws platform::Exception ("NSRangeException").
class OZDeletableItemList {
  public:
    using Items = std::vector<std::shared_ptr<OZDeletableItem>>;

    OZDeletableItemList() = default;
    OZDeletableItemList(const OZDeletableItemList&) = delete;
    OZDeletableItemList& operator=(const OZDeletableItemList&) = delete;
    virtual ~OZDeletableItemList() = default;

    /// The rows as they are now; later changes of the list do not show in it.
    [[nodiscard]] virtual Items allItems() = 0;
    /// Removes an item from the device and its row from the list. The row goes even if the item stays: the
    /// next reload shows it again.
    virtual void deleteItemAtIndex(size_t index) = 0;
    [[nodiscard]] virtual std::shared_ptr<OZDeletableItem> itemAtIndex(size_t index) = 0;
    [[nodiscard]] virtual size_t numberOfItems() = 0;
    /// Looks at the device anew.
    virtual void reloadItems() = 0;
};
