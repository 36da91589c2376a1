#include "Model/Apps/OZApp.h"

#include "Categories/Text.h"
#include "Categories/TextFolding.h"
#include "Model/Apps/AppIconFiles.h"
#include "Model/Apps/InstalledApps.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/Path.h"

#include <algorithm>

using infoplist::identifierAt;
using infoplist::pathAt;
using infoplist::textAt;

namespace {

OZApp::Containers containersAt(const platform::Dictionary& info, std::string_view key) {
    OZApp::Containers containers;
    if (const auto* paths = platform::valueAt<platform::Dictionary>(info, key)) {
        for (const auto& [identifier, value] : *paths) {
            if (const auto path = pathAt(*paths, identifier)) {
                containers.emplace(identifier, *path);
            }
        }
    }
    return containers;
}

std::string displayNameFor(const platform::Dictionary& info, std::string_view bundlePath) {
    for (const auto key : {infokey::displayName, infokey::name}) {
        if (const auto* name = platform::valueAt<std::string>(info, key);
            name && isNotEmptyOrWhitespace(*name)) {
            return *name;
        }
    }
    return std::string(platform::nameWithoutExtension(bundlePath));
}

} // namespace

std::shared_ptr<const OZApp> OZApp::make(OZAppType type, const platform::Dictionary& infoDictionary) {
    const auto path = pathAt(infoDictionary, infokey::path);
    const auto executable = textAt(infoDictionary, infokey::executable);
    const auto identifier = identifierAt(infoDictionary);
    if (!path || !executable || !identifier) {
        return nullptr;
    }
    std::shared_ptr<OZApp> app(new OZApp); // NOLINT: the constructor is private
    app->_type = type;
    app->_identifier = *identifier;
    app->_executableFileName = *executable;
    app->_bundlePath = *path;
    app->_displayName = displayNameFor(infoDictionary, *path);
    app->_foldedDisplayName = caseFoldedString(app->_displayName);
    app->_bundleContainer = pathAt(infoDictionary, infokey::bundleContainer);
    app->_dataContainer = pathAt(infoDictionary, infokey::container);
    app->_groupDataContainers = containersAt(infoDictionary, infokey::groupDataContainers);
    app->_pluginDataContainers = containersAt(infoDictionary, infokey::pluginDataContainers);
    if (type == OZAppType::user) {
        if (!app->_dataContainer) {
            return nullptr;
        }
        if (!app->_bundleContainer) {
            app->_bundleContainer = app->_dataContainer;
        }
    }
    return app;
}

bool OZApp::hasValidIcon(platform::FileManager& fileManager) const {
    // Two threads may look at once; they find the same.
    if (_hasValidIcon == IconState::unchecked) {
        _hasValidIcon = bundleHasIconFile(fileManager, _bundlePath) ? IconState::valid : IconState::invalid;
    }
    return _hasValidIcon == IconState::valid;
}
