#pragma once

#include "Model/Items/Deletable/Dictionaries/OZDictionary.h"
#include "Model/Items/Deletable/OZSortedItemList.h"

/// Dictionaries that are found and removed in the folders where the platform is known to keep them. A link in
/// the assets folder is not followed, neither by the search nor by a removal.
class OZDLDictionaryList : public OZSortedItemList {
  public:
    /// The device outlives the list.
    explicit OZDLDictionaryList(platform::Device& device)
        : _device(device) {}

    [[nodiscard]] const Items& protectedDictionaries() { return items(); }
    void addDictionary(std::shared_ptr<OZDictionary> dictionary) { addItem(std::move(dictionary)); }

  protected:
    [[nodiscard]] platform::Device& device() const { return _device; }
    void findItems() override;
    /// An asset's folder goes with its dictionary.
    void removeFromDevice(const OZDeletableItem& item) override;

  private:
    void addDictionaryAtPath(const std::string& path);
    void findAssets();
    void findInFolder(std::string_view folder);

    platform::Device& _device;
};
