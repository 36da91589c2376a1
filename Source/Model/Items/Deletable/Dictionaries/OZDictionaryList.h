#pragma once

#include "Model/Items/Deletable/OZDeletableItemList.h"

class DictionaryAssetService;

/// The device's dictionaries, however its generation keeps them: by the platform's asset service where that
/// can be reached, otherwise by the folders where dictionaries are known to be.
class OZDictionaryList : public OZDeletableItemList {
  public:
    /// No service means that none can be reached. Device and service outlive the list.
    explicit OZDictionaryList(platform::Device& device, DictionaryAssetService* service = nullptr)
        : _device(device)
        , _service(service) {}

    /// The list that finds and removes the dictionaries.
    [[nodiscard]] OZDeletableItemList& implementor();

    [[nodiscard]] Items allItems() override { return implementor().allItems(); }
    void deleteItemAtIndex(size_t index) override { implementor().deleteItemAtIndex(index); }
    [[nodiscard]] std::shared_ptr<OZDeletableItem> itemAtIndex(size_t index) override {
        return implementor().itemAtIndex(index);
    }
    [[nodiscard]] size_t numberOfItems() override { return implementor().numberOfItems(); }
    void reloadItems() override { implementor().reloadItems(); }

  private:
    platform::Device& _device;
    DictionaryAssetService* _service;
    std::unique_ptr<OZDeletableItemList> _implementor;
};
