#include "Model/Apps/OZApp.h"

#include "Categories/Text.h"
#include "Categories/TextFolding.h"
#include "Model/Apps/AppIconFiles.h"
#include "Model/Apps/InstalledApps.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/Path.h"

#include <algorithm>

namespace {

std::optional<std::string> textAt(const platform::Dictionary& info, std::string_view key) {
    const auto* text = platform::valueAt<std::string>(info, key);
    return text == nullptr || text->empty() ? std::nullopt : std::optional(*text);
}

std::optional<std::string> pathAt(const platform::Dictionary& info, std::string_view key) {
    auto path = textAt(info, key);
    if (!path || !path->starts_with('/')) {
        return std::nullopt;
    }
    path->resize(std::max<size_t>(path->find_last_not_of('/') + 1, 1));
    return path;
}

/// Identifiers come from files that applications bring along, and become names below containers.
std::optional<std::string> identifierAt(const platform::Dictionary& info) {
    auto identifier = textAt(info, infokey::identifier);
    return identifier && platform::isFileName(*identifier) ? identifier : std::nullopt;
}

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
