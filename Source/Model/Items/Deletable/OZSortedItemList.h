#pragma once

#include "Model/Items/Deletable/OZDeletableItemList.h"

#include <optional>

/// A list that keeps its items in the order of their titles, without regard to case. Of equal titles the one
/// that was found first comes first. Subclasses say what the device has and how an item is removed.
class OZSortedItemList : public OZDeletableItemList {
  public:
    [[nodiscard]] Items allItems() override { return items(); }
    void deleteItemAtIndex(size_t index) override;
    [[nodiscard]] std::shared_ptr<OZDeletableItem> itemAtIndex(size_t index) override;
    [[nodiscard]] size_t numberOfItems() override { return items().size(); }
    void reloadItems() override;

  protected:
    /// The rows; they are looked for if nobody has wanted them before.
    [[nodiscard]] Items& items();
    /// Adds what the device has, by `addItem`; called with an empty list.
    virtual void findItems() = 0;
    /// Removes an item, ignoring failures.
    virtual void removeFromDevice(const OZDeletableItem& item) = 0;
    /// Puts an item at its place in the order.
    void addItem(std::shared_ptr<OZDeletableItem> item);

  private:
    std::optional<Items> _items;
};
