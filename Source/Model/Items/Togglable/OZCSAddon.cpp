#include "Model/Items/Togglable/OZCSAddon.h"

#include "Model/Packages/OZPackage.h"

OZCSAddon::OZCSAddon(Found found)
    : OZTogglablePkgFile(std::move(found)) {
    setTitle(identifier());
}

std::optional<std::string> OZCSAddon::iconURL() {
    if (!_iconURL && package()) {
        _iconURL = package()->iconURL();
    }
    return _iconURL;
}
