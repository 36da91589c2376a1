#pragma once

#include "Model/Items/Deletable/Dictionaries/DictionaryAssetService.h"
#include "Model/Items/Deletable/Dictionaries/OZDLDictionaryList.h"

#include <map>

/// Dictionaries that the platform's asset service tells and removes.
class OZDMDictionaryList : public OZDLDictionaryList {
  public:
    /// Whether the device's generation leaves its dictionaries to the service, and the service can be
    /// reached: null is for one that cannot.
    [[nodiscard]] static bool isSupported(const platform::Device& device,
                                          const DictionaryAssetService* service);

    /// Device and service outlive the list.
    OZDMDictionaryList(platform::Device& device, DictionaryAssetService& service)
        : OZDLDictionaryList(device)
        , _service(service) {}

  protected:
    void findItems() override;
    void removeFromDevice(const OZDeletableItem& item) override;

  private:
    DictionaryAssetService& _service;
    /// By the paths of the assets' folders.
    std::map<std::string, std::shared_ptr<DictionaryAsset>, std::less<>> _assetsByPath;
};
