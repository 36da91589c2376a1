#include "Model/Packages/OZPackageInfo.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Packages/OZPackage.h"
#include "Platform/Files/Error.h"

OZPackageInfo::OZPackageInfo(std::shared_ptr<OZPackage> package, CSAddonArray CSAddons,
                             std::shared_ptr<OZPreferenceBundle> preferenceBundle)
    : _CSAddons(std::move(CSAddons))
    , _package(std::move(package))
    , _preferenceBundle(std::move(preferenceBundle)) {
    if (!_package) {
        throw platform::AssertionFailure("package");
    }
}

const std::string& OZPackageInfo::name() const {
    return _package->name() ? *_package->name() : _package->identifier();
}

std::optional<std::string> OZPackageInfo::iconURL() const {
    if (auto icon = _preferenceBundle ? _preferenceBundle->iconURL() : std::nullopt) {
        return icon;
    }
    if (!_CSAddons.empty()) {
        return _CSAddons.front()->iconURL();
    }
    return _package->iconURL();
}
