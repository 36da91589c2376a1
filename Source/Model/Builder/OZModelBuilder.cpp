#include "Model/Builder/OZModelBuilder.h"

#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Device.h"

OZModelBuilder::OZModelBuilder(platform::Device& device)
    : _device(device) {}

OZModelBuilder::~OZModelBuilder() = default;

OZCore& OZModelBuilder::core() {
    if (!_core) {
        _core = std::make_unique<OZCore>(_device, nullptr, nullptr);
        _core->setCleanupLogger(cleanupLogger());
    }
    return *_core;
}

OZDeviceActions& OZModelBuilder::deviceActions() {
    if (!_deviceActions) {
        _deviceActions =
            std::make_unique<OZDeviceActions>(_device, [](std::string_view) { return false; }, [] {});
    }
    return *_deviceActions;
}

std::unique_ptr<OZCleanupLogger> OZModelBuilder::cleanupLogger() const {
    return std::make_unique<OZCleanupLogger>(_device);
}
