#pragma once

#include "Model/Items/Togglable/OZTogglablePkgFile.h"
#include "Platform/Formats/PropertyList.h"

#include <optional>
#include <string>

/// A property list by which PreferenceLoader adds a page to the settings application. It is disabled by its
/// extension, in its own folder.
class OZPreferenceBundle : public OZTogglablePkgFile {
  public:
    static std::optional<std::string_view> enabledFolder() {
        return "/Library/PreferenceLoader/Preferences/";
    }
    static std::optional<std::string_view> disabledFolder() { return enabledFolder(); }
    static std::optional<std::string_view> enabledExtension() { return "plist"; }
    static std::optional<std::string_view> disabledExtension() { return "disabled"; }

    /// What a page's "entry" tells: the value of "label", and the dictionary itself.
    struct Entry {
        std::string label;
        platform::Dictionary dictionary;
    };

    /// Null if there is no such file, and if it is no property list of a page. The name is relative to the
    /// folder and may lead into folders below it. The device outlives the bundle.
    static std::shared_ptr<OZPreferenceBundle> make(platform::Device& device, std::string_view identifier,
                                                    std::string_view fileNameWithoutExtension);
    OZPreferenceBundle(Found found, Entry entry);

    /// The name of the bundle that holds the page, without extension; a simple page needs none.
    [[nodiscard]] const std::optional<std::string>& bundle() const { return _bundle; }
    /// Whether the page is shown on the device's version of the platform.
    [[nodiscard]] bool isForCurrentiOSVersion() const { return _isForCurrentiOSVersion; }

    /// The icon's file is searched by the first call.
    [[nodiscard]] std::optional<std::string> iconURL() override;
    void setIconURL(std::optional<std::string> url) override { _iconURL = std::move(url); }

  private:
    /// The array holds the first version that the page is for and, if there is one, the first that it is not
    /// for any more. Null stands for all versions.
    void checkiOSVersionWithCFVersionArray(const platform::Array* versions);
    [[nodiscard]] std::optional<std::string> iconPath() const;

    // What the property list names as its icon, until it was searched.
    std::optional<std::string> _plistIconValue;
    bool _isForCurrentiOSVersion = false;
    std::optional<std::string> _iconURL;
    std::optional<std::string> _bundle;
};
