#include "Model/Builder/OZModelBuilder.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Items/Togglable/Daemons/OZDaemonList.h"
#include "Model/Items/Togglable/Restore/OZSystemRestore.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Services/OZUserDefaultsSync.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

OZModelBuilder::OZModelBuilder(platform::Device& device)
    : _device(device) {}

OZModelBuilder::~OZModelBuilder() = default;

platform::UserDefaults& OZModelBuilder::standardUserDefaults() {
    auto& defaults = _device.standardUserDefaults();
    registerDefaultSettings(defaults);
    return defaults;
}

void OZModelBuilder::reloadDefaults() {
    standardUserDefaults().revert();
    if (_localizationManager) {
        _localizationManager->loadDefaults();
    }
    if (_appList) {
        _appList->removeAllExcludedApps();
        _appList->loadDefaults();
    }
    if (_core) {
        _core->choices().removeAllLanguagesToRemove();
        _core->choices().loadDefaults();
    }
    if (_pluginLoader) {
        _pluginLoader->loadDefaults();
    }
}

const platform::Bundle& OZModelBuilder::bundle() {
    if (!_bundle) {
        _bundle = std::make_unique<platform::Bundle>();
    }
    return *_bundle;
}

OZAppList& OZModelBuilder::appList() {
    if (!_appList) {
        _appList = std::make_unique<OZAppList>(_device);
        registerObject(standardUserDefaults(), *_appList);
    }
    return *_appList;
}

OZLocalizationManager& OZModelBuilder::localizationManager() {
    if (!_localizationManager) {
        auto& defaults = standardUserDefaults();
        _localizationManager = std::make_unique<OZLocalizationManager>(_device, defaults, bundle());
        registerObject(defaults, *_localizationManager);
    }
    return *_localizationManager;
}

OZCore& OZModelBuilder::core() {
    if (!_core) {
        auto& installedApps = appList();
        _core = std::make_unique<OZCore>(_device, installedApps, localizationManager());
        _core->setCleanupLogger(cleanupLogger());
        registerObject(standardUserDefaults(), _core->choices());
        _languageChange =
            platform::Observation(_device.notificationCenter(), OZLocalizationNotification, nullptr,
                                  [this](const platform::Notification&) { _core->choices().localize(); });
    }
    return *_core;
}

OZDaemonList& OZModelBuilder::daemonList() {
    if (!_daemonList) {
        _daemonList = std::make_unique<OZDaemonList>(_device, [this](std::string_view key) {
            return localizationManager().localizedStringForKey(key);
        });
        _daemonListLanguageChange =
            platform::Observation(_device.notificationCenter(), OZLocalizationNotification, nullptr,
                                  [this](const platform::Notification&) { _daemonList->localize(); });
    }
    return *_daemonList;
}

OZDeviceActions& OZModelBuilder::deviceActions() {
    if (!_deviceActions) {
        _deviceActions = std::make_unique<OZDeviceActions>(
            _device,
            [this](std::string_view identifier) {
                return appList().appWithIdentifier(identifier) != nullptr;
            },
            [this] { std::ignore = standardUserDefaults().synchronize(); });
    }
    return *_deviceActions;
}

OZDictionaryList& OZModelBuilder::dictionaryList() {
    if (!_dictionaryList) {
        _dictionaryList = std::make_unique<OZDictionaryList>(_device);
    }
    return *_dictionaryList;
}

OZPackageWorkspace& OZModelBuilder::packageWorkspace() {
    if (!_packageWorkspace) {
        _packageWorkspace = std::make_unique<OZPackageWorkspace>(_device);
    }
    return *_packageWorkspace;
}

OZPluginLoader& OZModelBuilder::pluginLoader() {
    if (!_pluginLoader) {
        _pluginLoader = std::make_unique<OZPluginLoader>(_device);
        registerObject(standardUserDefaults(), *_pluginLoader);
    }
    return *_pluginLoader;
}

OZPreferenceFileList& OZModelBuilder::preferenceFileList() {
    if (!_preferenceFileList) {
        auto& installedApps = appList();
        _preferenceFileList = std::make_unique<OZPreferenceFileList>(
            _device, &installedApps,
            [&workspace = packageWorkspace()](std::string_view identifier) -> std::optional<OZPackageLabel> {
                const auto info = workspace.infoForPackageWithIdentifier(identifier);
                return info ? std::optional(OZPackageLabel{info->name(), info->iconURL()}) : std::nullopt;
            });
    }
    return *_preferenceFileList;
}

std::unique_ptr<OZCleanupLogger> OZModelBuilder::cleanupLogger() const {
    auto logger = std::make_unique<OZCleanupLogger>(_device);
    logger->setHostOutput(_hostOutput);
    return logger;
}

std::unique_ptr<OZFontsFolderMover> OZModelBuilder::fontsFolderMover() const {
    return std::make_unique<OZFontsFolderMover>(_device);
}

std::unique_ptr<OZSystemRestore> OZModelBuilder::systemRestore() {
    auto& workspace = packageWorkspace();
    return std::make_unique<OZSystemRestore>(workspace, daemonList());
}
