#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

class OZCSAddon;
class OZPackage;
class OZPreferenceBundle;

/// What an installed package brings along that can be switched.
class OZPackageInfo {
  public:
    using CSAddonArray = std::vector<std::shared_ptr<OZCSAddon>>;

    /// Throws AssertionFailure without a package. The bundle may be null.
    OZPackageInfo(std::shared_ptr<OZPackage> package, CSAddonArray CSAddons,
                  std::shared_ptr<OZPreferenceBundle> preferenceBundle);

    [[nodiscard]] OZPackage& package() const { return *_package; }
    /// Empty for a package without add-ons.
    [[nodiscard]] const CSAddonArray& CSAddons() const { return _CSAddons; }
    /// The bundle for the device's version of the platform, or null.
    [[nodiscard]] const std::shared_ptr<OZPreferenceBundle>& preferenceBundle() const {
        return _preferenceBundle;
    }

    /// The package's name for people, or else its identifier.
    [[nodiscard]] const std::string& name() const;
    /// The bundle's icon, or else that of the first add-on; that of the package where it has neither.
    [[nodiscard]] std::optional<std::string> iconURL() const;

  private:
    CSAddonArray _CSAddons;
    std::shared_ptr<OZPackage> _package;
    std::shared_ptr<OZPreferenceBundle> _preferenceBundle;
};
