#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

// The restart of the preference daemon: idle, scheduled (a token), running and cooling down (the task is
// stored), idle. A restart that becomes due while a task is stored is lost.

namespace {

// iOS 7.1 is the last one whose daemon needs no restart.
constexpr double lastVersionWithoutReload = ios::v7_1;
constexpr std::string_view serviceManagerTool = "launchctl";
constexpr const char* preferenceDaemon = "system/com.apple.cfprefsd.xpc.daemon";
// Seconds. Deletions in quick succession lead to one restart.
constexpr double delayBeforeReload = 2.0;
constexpr double delayAfterReload = 2.0;

} // namespace

OZPreferenceFileList::~OZPreferenceFileList() {
    _device.mainQueue().cancel(_scheduledReload);
    _device.mainQueue().cancel(_endOfReload);
}

bool OZPreferenceFileList::shouldReloadPrefDaemon() const {
    return _device.facts().foundationVersion > lastVersionWithoutReload;
}

void OZPreferenceFileList::schedulePrefDaemonReload() {
    _device.mainQueue().cancel(_scheduledReload);
    _scheduledReload = _device.mainQueue().postAfter(delayBeforeReload, [this] { reloadPrefDaemon(); });
}

void OZPreferenceFileList::reloadPrefDaemon() {
    const auto tool = OZTask::launchPathForExecutable(_device, serviceManagerTool);
    if (prefDaemonReloadTask() || !shouldReloadPrefDaemon() || !tool) {
        return;
    }
    const auto task = OZTask::make(_device, *tool, {"kickstart", "-k", preferenceDaemon});
    task->setStdErrAction(OZTaskStreamAction::discard);
    task->setStdOutAction(OZTaskStreamAction::discard);
    _termination =
        platform::Observation(_device.notificationCenter(), OZTaskDidTerminateNotification, task.get(),
                              [this](const platform::Notification&) { prefDaemonReloadComplete(); });
    _prefDaemonReloadTask.store(task);
    if (_prefDaemonReloadDelegate != nullptr) {
        _prefDaemonReloadDelegate->prefDaemonReloadStarted();
    }
    // A launch that failed is announced as an end, too.
    std::ignore = task->launchAsynchronously();
}

void OZPreferenceFileList::prefDaemonReloadComplete() {
    _termination = {};
    _endOfReload = _device.mainQueue().postAfter(delayAfterReload, [this] { endPrefDaemonReload(); });
}

void OZPreferenceFileList::endPrefDaemonReload() {
    _prefDaemonReloadTask.store(nullptr);
    if (_prefDaemonReloadDelegate != nullptr) {
        _prefDaemonReloadDelegate->prefDaemonReloadEnded();
    }
}
