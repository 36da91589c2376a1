#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

namespace platform {
class Device;
}

/// Daemons that serve one purpose and have one switch. It is on if all of them are.
class OZDaemonGroup : public OZTogglableItemList {
  public:
    /// A group of those daemons that the device has, by their identifiers; null if it has none.
    static std::shared_ptr<OZDaemonGroup> make(platform::Device& device, std::string identifier,
                                               const std::vector<std::string_view>& daemonIdentifiers);

    [[nodiscard]] std::optional<std::string> itemDescription() const override { return _itemDescription; }
    void setItemDescription(std::optional<std::string> description) override {
        _itemDescription = std::move(description);
    }

  private:
    using OZTogglableItemList::OZTogglableItemList;

    std::optional<std::string> _itemDescription;
};
