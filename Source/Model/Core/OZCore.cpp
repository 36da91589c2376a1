#include "Model/Core/OZCore.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupSteps.h"
#include "Platform/Device.h"

#include <algorithm>

OZCore::OZCore(platform::Device& device, OZAppList* appList, OZLocalizationManager* localizationManager)
    : platform::FileManager(device.fileManager())
    , _device(device)
    , _appList(appList)
    , _localizationManager(localizationManager) {
    resetCleanupSettings();
    resetFileTypes();
}

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

std::vector<std::string_view> OZCore::cleanupStepKeys(const platform::Device& device) {
    std::vector<std::string_view> keys;
    for (const auto& step : cleanupSteps) {
        if (device.facts().foundationVersion >= step.sinceFoundationVersion) {
            keys.push_back(step.key);
        }
    }
    return keys;
}

platform::Dictionary OZCore::defaultCleanupSettings(const platform::Device& device) {
    platform::Dictionary settings;
    for (const auto key : cleanupStepKeys(device)) {
        const auto* step = std::ranges::find(cleanupSteps, key, &CleanupStepDescription::key);
        // Attachments know more than on and off.
        settings[std::string(key)] = key == cleanupstep::attachments
                                         ? platform::Value(uint64_t{0})
                                         : platform::Value(step->byDefault == StepDefault::on);
    }
    return settings;
}

std::vector<std::string_view> OZCore::enabledCleanupStepKeys() const {
    auto keys = cleanupStepKeys(_device);
    std::erase_if(keys, [&](std::string_view key) {
        const auto number = numberForCleanupSetting(key);
        return !number || number->unsignedValue().value_or(0) == 0;
    });
    return keys;
}

std::optional<platform::Value> OZCore::numberForCleanupSetting(std::string_view key) const {
    const auto found = _cleanupSettings.find(key);
    return found == _cleanupSettings.end() ? std::nullopt : std::optional(found->second);
}

void OZCore::setNumberForCleanupSetting(const platform::Value& number, std::string_view key) {
    _cleanupSettings.insert_or_assign(std::string(key), number);
}

void OZCore::resetCleanupSettings() {
    _cleanupSettings = defaultCleanupSettings(_device);
}

void OZCore::setCleanupSettingsResettingInvalid(const platform::Dictionary& settings) {
    auto repaired = defaultCleanupSettings(_device);
    for (auto& [key, number] : repaired) {
        const auto given = settings.find(key);
        if (given != settings.end() && given->second.isNumber()) {
            number = given->second;
        }
    }
    _cleanupSettings = std::move(repaired);
}

bool OZCore::knowsApplications() const {
    return _appList != nullptr && _appList->isComplete();
}
