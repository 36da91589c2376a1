#include "Model/Builder/OZModelBuilder.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZUserDefaultsSync.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Bundle.h"
#include "Platform/Device.h"

OZModelBuilder::OZModelBuilder(platform::Device& device)
    : _device(device) {}

OZModelBuilder::~OZModelBuilder() = default;

platform::UserDefaults& OZModelBuilder::standardUserDefaults() {
    auto& defaults = _device.standardUserDefaults();
    registerDefaultSettings(defaults);
    return defaults;
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

OZCore& OZModelBuilder::core() {
    if (!_core) {
        _core = std::make_unique<OZCore>(_device, &appList(), nullptr);
        _core->setCleanupLogger(cleanupLogger());
        registerObject(standardUserDefaults(), *_core);
    }
    return *_core;
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

std::unique_ptr<OZCleanupLogger> OZModelBuilder::cleanupLogger() const {
    return std::make_unique<OZCleanupLogger>(_device);
}

std::unique_ptr<OZFontsFolderMover> OZModelBuilder::fontsFolderMover() const {
    return std::make_unique<OZFontsFolderMover>(_device);
}
