#pragma once

#include "Model/Items/Togglable/OZTogglablePkgFile.h"

/// A dynamic library that Cydia Substrate loads into running programs. "X.dylib" is enabled and "X.disabled"
/// is not; both are in one folder. It is called by its identifier until its package gives it a better name.
class OZCSAddon : public OZTogglablePkgFile {
  public:
    static std::optional<std::string_view> enabledFolder() {
        return "/Library/MobileSubstrate/DynamicLibraries/";
    }
    static std::optional<std::string_view> disabledFolder() { return enabledFolder(); }
    static std::optional<std::string_view> enabledExtension() { return "dylib"; }
    static std::optional<std::string_view> disabledExtension() { return "disabled"; }

    explicit OZCSAddon(Found found);

    /// The package's own icon where it was given none.
    [[nodiscard]] std::optional<std::string> iconURL() override;
    void setIconURL(std::optional<std::string> url) override { _iconURL = std::move(url); }

  private:
    std::optional<std::string> _iconURL;
};
