#pragma once

#include "Platform/Formats/PropertyList.h"

#include <memory>
#include <string>
#include <vector>

/// A dictionary as the platform's asset service keeps it.
class DictionaryAsset {
  public:
    virtual ~DictionaryAsset() = default;

    [[nodiscard]] virtual bool isPresentOnDisk() const = 0;
    /// Device path of the asset's folder, without "/" at its end; empty if it has none.
    [[nodiscard]] virtual std::string localPath() const = 0;
    /// Among them the text "DictionaryPackageName", the dictionary's name in the asset's folder.
    [[nodiscard]] virtual platform::Dictionary attributes() const = 0;
    /// Lets the service remove the asset; returns at once.
    virtual void purge() = 0;
};

/// The platform's own keeper of dictionaries. It runs on the device alone: whoever has no access to it works
/// without.
class DictionaryAssetService {
  public:
    virtual ~DictionaryAssetService() = default;

    /// All dictionaries that there are, also those that are not on the device.
    [[nodiscard]] virtual std::vector<std::shared_ptr<DictionaryAsset>> availableDefinitionDictionaries() = 0;
};
