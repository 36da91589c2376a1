#include "Interface/Flow/OZAppDelegate.h"

#include "Interface/Alerts/AlertPresets.h"
#include "Interface/Host.h"
#include "Interface/InterfaceContext.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <utility>

namespace {

/// For the platform's own words of farewell.
constexpr double exitDelay = 0.5;

} // namespace

OZAppDelegate::OZAppDelegate(InterfaceContext& context, platform::Application& application)
    : _context(context)
    , _application(application) {
    // Any thread may warn, also one of a run.
    _context.device.warnings().setReceiver(
        [this](const std::string& line) { _context.device.mainQueue().post([this, line] { warn(line); }); });
}

OZAppDelegate::~OZAppDelegate() {
    _context.device.warnings().setReceiver(nullptr);
    _context.device.mainQueue().cancel(_exit);
}

void OZAppDelegate::startLongRunningTask() {
    _applicationShouldExitOnSuspend = false;
    _context.host.setIdleTimerDisabled(true);
    saveChoices();
}

void OZAppDelegate::stopLongRunningTask() {
    _applicationShouldExitOnSuspend = true;
    _context.host.setIdleTimerDisabled(false);
    if (_cleanedBlock && _cleanup != nullptr && !_cleanup->analyzes()) {
        _cleanedBlock();
    }
    showWarnings();
}

void OZAppDelegate::close() {
    _application.prepareToClose();
    _application.close();
}

void OZAppDelegate::applicationDidEnterBackground() {
    _application.prepareToClose();
    if (!_applicationShouldExitOnSuspend) {
        _application.runInBackground(true);
    } else if (_context.foundationVersion() <= ios::v7_1) {
        _application.exit();
    } else {
        _application.runInBackground(true);
        _exit = _context.device.mainQueue().postAfter(exitDelay, [this] { _application.exit(); });
    }
}

void OZAppDelegate::applicationWillEnterForeground() {
    _context.device.mainQueue().cancel(std::exchange(_exit, 0));
    _application.runInBackground(false);
}

bool OZAppDelegate::windowShouldClose() {
    if (_applicationShouldExitOnSuspend) {
        saveChoices();
        return true;
    }
    if (!std::exchange(_isAsking, true)) {
        const auto agreed = [this](OZAlertAction&) {
            // The run may have come to its end meanwhile.
            _applicationShouldExitOnSuspend ? close() : _cleanup->setExitOnComplete(true);
        };
        const auto alert = alerts::yesNoAlert(_context, agreed, nullptr, false);
        alert->setMessage(_context.text("CLOSEINRUNMSG"));
        alert->setDidDismissBlock([this] { _isAsking = false; });
        alert->show();
    }
    return false;
}

void OZAppDelegate::warn(const std::string& line) {
    _warnings.push_back(line);
    if (_applicationShouldExitOnSuspend) {
        showWarnings();
    }
}

// In a run they would cover what it shows.
void OZAppDelegate::showWarnings() {
    if (_warnings.empty()) {
        return;
    }
    std::string message;
    for (const auto& line : std::exchange(_warnings, {})) {
        message += (message.empty() ? "" : "\n\n") + line;
    }
    const auto alert = alerts::okAlert(_context);
    alert->setMessage(message);
    alert->show();
}
