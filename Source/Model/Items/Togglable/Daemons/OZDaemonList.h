#pragma once

#include "Model/Items/Togglable/OZTogglableItemList.h"

#include <functional>

namespace platform {
class Device;
}
class OZDaemonGroup;

/// All groups of launch daemons that the device has, by group identifier.
class OZDaemonList : public OZTogglableItemList {
  public:
    /// Gives the text for a key in the user's language.
    using TextProvider = std::function<std::string(std::string_view key)>;

    /// The device outlives the list.
    OZDaemonList(platform::Device& device, TextProvider localizedString);

    /// A group, or else the daemon of any group, with this identifier; null if there is none.
    [[nodiscard]] std::shared_ptr<OZTogglableItem> itemWithIdentifier(std::string_view identifier) override;
    /// Gives the groups their titles and descriptions anew; to be called when the language has changed.
    void localize();

  protected:
    void initializeItems() override;

  private:
    platform::Device& _device;
    TextProvider _localizedString;
};
