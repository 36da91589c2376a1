#pragma once

#include "Model/Items/OZItem.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {
class Device;
}

/// Something that can only be removed: one or more items of the device's tree under one title. It only
/// describes them; the list that it stands in removes them.
class OZDeletableItem : public OZItem {
  public:
    /// Throws AssertionFailure for an empty identifier and without paths. The device outlives the item.
    OZDeletableItem(platform::Device& device, std::vector<std::string> paths, std::string identifier);
    /// An item of one path, which is its identifier, too.
    OZDeletableItem(platform::Device& device, const std::string& path);
    OZDeletableItem(const OZDeletableItem&) = delete;
    OZDeletableItem& operator=(const OZDeletableItem&) = delete;

    [[nodiscard]] std::string identifier() const override { return _identifier; }
    [[nodiscard]] std::string title() const override { return _title; }
    void setTitle(std::string title) override { _title = std::move(title); }
    /// Device paths, at least one.
    [[nodiscard]] const std::vector<std::string>& paths() const { return _paths; }

    /// The size of all paths together as text, such as "1.50 KiB". The first call walks the folders among
    /// them; what it found is kept, whatever becomes of the files.
    [[nodiscard]] const std::string& humanReadableSize();

  private:
    platform::Device& _device;
    std::optional<std::string> _humanReadableSize;
    std::string _identifier;
    std::vector<std::string> _paths;
    std::string _title;
};
