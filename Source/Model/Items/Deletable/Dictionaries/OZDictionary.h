#pragma once

#include "Model/Items/Deletable/OZDeletableItem.h"

#include <memory>

/// A dictionary: a folder that has the file "Contents/Info.plist".
class OZDictionary : public OZDeletableItem {
  public:
    /// Null if the first path is no dictionary. Throws AssertionFailure for an empty identifier and without
    /// paths. The title is the first path's name without its extension.
    static std::shared_ptr<OZDictionary> make(platform::Device& device, std::vector<std::string> paths,
                                              std::string identifier);
    /// The same for one path, which is the identifier, too.
    static std::shared_ptr<OZDictionary> make(platform::Device& device, const std::string& path);

    [[nodiscard]] const std::string& path() const { return paths().front(); }

  private:
    using OZDeletableItem::OZDeletableItem;
};
