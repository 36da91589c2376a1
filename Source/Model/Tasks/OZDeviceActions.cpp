#include "Model/Tasks/OZDeviceActions.h"

#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/OZTaskManager.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr double cacheRebuildSeconds = 3.0;
constexpr double politeStopSeconds = 10.0;
constexpr long hangupSignal = 1;

// On systems with this application's kind of jailbreak a stopped "backboardd" does not come back as it
// should.
constexpr std::string_view hangupApplication = "com.qwertyoruiopz.zmach-portal";

/// Runs the tool quietly if the device has it, and says whether it has.
bool runTool(platform::Device& device, std::string_view name, std::vector<std::string> arguments) {
    const auto path = OZTask::launchPathForExecutable(device, name);
    if (!path) {
        return false;
    }
    std::ignore = OZTask::launchSyncTask(device, *path, std::move(arguments), true);
    return true;
}

} // namespace

OZDeviceActions::OZDeviceActions(platform::Device& device, std::function<bool(std::string_view)> isInstalled,
                                 std::function<void()> prepareToClose)
    : _device(device)
    , _isInstalled(std::move(isInstalled))
    , _prepareToClose(std::move(prepareToClose)) {}

bool OZDeviceActions::canRestart() const {
    return std::ranges::any_of(std::array{"su", "launchctl", "killall"}, [&](std::string_view name) {
        return OZTask::launchPathForExecutable(_device, name).has_value();
    });
}

void OZDeviceActions::performAction(OZDeviceAction action) {
    switch (action) {
    case OZDeviceAction::none:
        break;
    case OZDeviceAction::respring:
        respring();
        break;
    case OZDeviceAction::rebuildUICacheAndRespring:
        rebuildUICacheAndRespring();
        break;
    case OZDeviceAction::reboot:
        reboot();
        break;
    }
}

void OZDeviceActions::reboot() {
    _prepareToClose();
    runTool(_device, "reboot", {});
}

void OZDeviceActions::rebuildUICache() {
    runTool(_device, "su", {"-c", "uicache", "mobile"});
}

void OZDeviceActions::rebuildUICacheAndRespring() {
    rebuildUICache();
    _device.sleep(cacheRebuildSeconds);
    respring();
}

void OZDeviceActions::respring() {
    _prepareToClose();
    stopPolitely();
    std::ignore = OZTaskManager::killTasksWithNames(_device, {"backboardd", "SpringBoard", "sbreload"});
}

void OZDeviceActions::stopPolitely() {
    const double version = _device.facts().foundationVersion;
    if (version >= ios::v10_0 && _isInstalled(hangupApplication)) {
        std::ignore = OZTaskManager::killTaskWithName(_device, "SpringBoard", hangupSignal);
        _device.sleep(politeStopSeconds);
    } else if (version >= ios::v6_0 && runTool(_device, "launchctl", {"stop", "com.apple.backboardd"})) {
        _device.sleep(politeStopSeconds);
    }
}
