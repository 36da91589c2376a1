#pragma once

#include "Model/Items/Togglable/OZTogglableItem.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// By key, in the keys' byte order.
using OZTogglableItemMap = std::map<std::string, std::shared_ptr<OZTogglableItem>, std::less<>>;

/// Items that behave as one. The items are made once, at first use, and stay for the list's life; a list has
/// no wanted state of its own, only that of its items.
class OZTogglableItemList : public OZTogglableItem {
  public:
    explicit OZTogglableItemList(std::string identifier = {});
    OZTogglableItemList(const OZTogglableItemList&) = delete;
    OZTogglableItemList& operator=(const OZTogglableItemList&) = delete;

    [[nodiscard]] std::string identifier() const override { return _identifier; }
    [[nodiscard]] std::string title() const override { return _title; }
    void setTitle(std::string title) override { _title = std::move(title); }

    [[nodiscard]] OZTogglableItemMap items() { return protectedItems(); }
    /// By title, then by identifier, both without regard to case. The order is that of the first call, for
    /// the life of the list, whatever titles the items get later.
    [[nodiscard]] const std::vector<std::shared_ptr<OZTogglableItem>>& itemsSortedByTitle();
    /// The item under a key, or null.
    [[nodiscard]] virtual std::shared_ptr<OZTogglableItem> itemWithIdentifier(std::string_view identifier);

    /// False: the list is enabled if all its items are, as an empty list is. True: it is enabled if any item
    /// is, and an empty list is not.
    [[nodiscard]] virtual bool prefersEnabledState() const { return false; }

    /// All items in their order; true if any of them changed.
    bool applyChanges() override;
    bool discardChanges() override;
    [[nodiscard]] bool currentEnabledState() override;
    [[nodiscard]] bool enabledState() override;
    /// Of every item.
    void setEnabledState(bool enabled) override;

  protected:
    /// The items, for subclasses, which fill the map in `initializeItems` or in their constructors.
    [[nodiscard]] OZTogglableItemMap& protectedItems();
    [[nodiscard]] bool hasMadeItems() const { return _protectedItems.has_value(); }
    /// Called once, at the first use of the items, with an empty map.
    virtual void initializeItems() {}

  private:
    using Operation = bool (OZTogglableItem::*)();
    bool callOnAll(Operation operation);
    [[nodiscard]] bool reduce(Operation state);

    std::string _identifier;
    std::optional<OZTogglableItemMap> _protectedItems;
    std::optional<std::vector<std::shared_ptr<OZTogglableItem>>> _itemsSortedByTitle;
    std::string _title;
};
