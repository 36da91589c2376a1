#include "Model/Items/Togglable/OZCSAddonToggler.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Packages/OZPackage.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Platform/Device/UserDefaults.h"

namespace {

constexpr std::string_view defaultsKey = "autoManageDependencies";
constexpr std::string_view safeModePackage = "com.saurik.substrate.safemode";

std::shared_ptr<OZCSAddon> findAddonOfPackage(OZCSAddonList& list, std::string_view identifier) {
    for (const auto& item : list.itemsSortedByTitle()) {
        auto addon = std::static_pointer_cast<OZCSAddon>(item);
        if (addon->package() && addon->package()->identifier() == identifier) {
            return addon;
        }
    }
    return nullptr;
}

} // namespace

OZCSAddonToggler::OZCSAddonToggler(OZPackageWorkspace& workspace, platform::UserDefaults& defaults)
    : _workspace(workspace)
    , _defaults(defaults)
    , _list(workspace.CSAddonList())
    , _safeModeAddon(findAddonOfPackage(_list, safeModePackage)) {}

bool OZCSAddonToggler::autoManageDependencies() const {
    if (!_defaults.objectForKey(defaultsKey)) {
        _defaults.setBool(defaultsKey, true);
    }
    return _defaults.boolForKey(defaultsKey);
}

void OZCSAddonToggler::setAutoManageDependencies(bool manage) {
    _defaults.setBool(defaultsKey, manage);
    if (manage) {
        autoManageDependenciesForAllAddons();
    }
}

void OZCSAddonToggler::setEnabledStateOfAddon(OZCSAddon& addon, bool enabled) {
    addon.setEnabledState(enabled);
    if (autoManageDependencies()) {
        autoManageDependenciesForAddon(addon);
    }
}

void OZCSAddonToggler::toggleAll() {
    const bool enabled = !_list.enabledState();
    for (const auto& addon : _list.addons()) {
        if (enabled || addon != _safeModeAddon) {
            addon->setEnabledState(enabled);
        }
    }
}

// An add-on of no package has nothing that it needs, as far as anybody knows.
void OZCSAddonToggler::autoManageDependenciesForAddon(OZCSAddon& addon) {
    if (!addon.package()) {
        return;
    }
    const std::string& identifier = addon.package()->identifier();
    const bool enabled = addon.enabledState();
    for (const auto& other : enabled ? _workspace.CSAddonDependenciesForPkgId(identifier)
                                     : _workspace.CSAddonDependantsForPkgId(identifier)) {
        other->setEnabledState(enabled);
    }
}

void OZCSAddonToggler::autoManageDependenciesForAllAddons() {
    for (const auto& item : _list.itemsSortedByTitle()) {
        if (item->enabledState()) {
            autoManageDependenciesForAddon(static_cast<OZCSAddon&>(*item));
        }
    }
}
