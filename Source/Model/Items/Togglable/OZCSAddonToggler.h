#pragma once

#include <memory>
#include <string_view>

namespace platform {
class UserDefaults;
}
class OZCSAddon;
class OZCSAddonList;
class OZPackageWorkspace;

/// What the switches over all add-ons do beside setting a state: an add-on that is switched on takes along
/// what it needs, and one that is switched off takes along what needs it. Only wanted states change; nothing
/// happens on the device before `applyChanges`.
class OZCSAddonToggler {
  public:
    /// Waits for the workspace. What is given outlives the toggler.
    OZCSAddonToggler(OZPackageWorkspace& workspace, platform::UserDefaults& defaults);

    /// The user's choice whether dependencies follow; on, and stored so, where nothing is stored.
    [[nodiscard]] bool autoManageDependencies() const;
    /// Stores the choice. Turned on, it brings all add-ons into line at once.
    void setAutoManageDependencies(bool manage);

    /// The user moves an add-on's switch.
    void setEnabledStateOfAddon(OZCSAddon& addon, bool enabled);
    /// Sets every add-on to the opposite of the list's state. The add-on that leads out of a loop of crashes
    /// is not switched off. No dependency follows.
    void toggleAll();

    /// Makes the others follow the add-on's wanted state, whatever the user's choice.
    void autoManageDependenciesForAddon(OZCSAddon& addon);
    /// The same for all that are wanted enabled, and for no other.
    void autoManageDependenciesForAllAddons();

    /// The first add-on of the package of the safe mode; null if there is none.
    [[nodiscard]] const std::shared_ptr<OZCSAddon>& safeModeAddon() const { return _safeModeAddon; }

  private:
    OZPackageWorkspace& _workspace;
    platform::UserDefaults& _defaults;
    OZCSAddonList& _list;
    std::shared_ptr<OZCSAddon> _safeModeAddon;
};
