#include "Model/Core/OZCore.h"

#include "Model/Apps/OZAppList.h"
#include "Platform/Device.h"

OZCore::OZCore(platform::Device& device, const OZAppList& appList,
               const OZLocalizationManager& localizationManager)
    : platform::FileManager(device.fileManager())
    , _device(device)
    , _appList(appList)
    , _localizationManager(localizationManager)
    , _choices(device, localizationManager) {}

OZCore::~OZCore() = default;

void OZCore::resetState() {
    std::ignore = changeCurrentDirectoryPath("/");
    forgetLastFolder();
    _mode = OZCoreMode::clean;
    _fileCount = 0;
    _cleanupStepCount = 0;
    _freedSpace = 0;
    _freedSpaceString.reset();
    _stayedItems.clear();
    if (_cleanupLogger) {
        _cleanupLogger->closeLogFile();
    }
}

bool OZCore::knowsApplications() const {
    return _appList.isComplete();
}
