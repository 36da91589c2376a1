#pragma once

#include "Model/Items/Deletable/OZDeletableItem.h"

#include <string_view>

/// A file in which an application or an add-on keeps its settings.
class OZPreferenceFile : public OZDeletableItem {
  public:
    /// The title is the name without extension and without what identifies its maker ("bar_baz" for
    /// "com.foo.bar.baz.plist"), until somebody knows the owner's name. Throws AssertionFailure for an empty
    /// identifier and without paths.
    OZPreferenceFile(platform::Device& device, std::vector<std::string> paths, std::string identifier);
    /// A file of one path, which is its identifier, too.
    OZPreferenceFile(platform::Device& device, const std::string& path);

    [[nodiscard]] const std::string& path() const { return paths().front(); }
    /// The name of the image that stands for a file without an icon URL.
    [[nodiscard]] static std::string_view icon() { return "FileIcon"; }
    [[nodiscard]] std::optional<std::string> iconURL() override { return _iconURL; }
    void setIconURL(std::optional<std::string> url) override { _iconURL = std::move(url); }

  private:
    std::optional<std::string> _iconURL;
};
