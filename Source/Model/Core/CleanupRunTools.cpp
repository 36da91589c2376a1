// What a run asks of the device's programs.
#include "Model/Core/CleanupRun.h"
#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/OZTaskManager.h"

namespace {

// None of what is no text: a name that is cut out of it could be another package's.
std::string outputOf(platform::Device& device, std::string_view tool, std::vector<std::string> arguments) {
    const auto task = OZTask::make(device, tool, std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::capture);
    task->launchSynchronously();
    return task->output().value_or("");
}

} // namespace

void CleanupRun::writeContents(std::string_view path, std::string_view bytes,
                               const platform::FileOwnership& ownership) {
    std::ignore = _files.writeContents(path, bytes, ownership);
}

void CleanupRun::quit(const std::vector<std::string>& programs) {
    OZTaskManager::killTasksWithNames(_device, programs);
}

void CleanupRun::quitUnlessAnalyzing(const std::string& program) {
    if (_mode != OZCoreMode::analyze) {
        OZTaskManager::killTaskWithName(_device, program);
    }
}

void CleanupRun::onlyWhenCleaning(const std::function<void()>& work) {
    if (_mode == OZCoreMode::clean) {
        work();
    }
}

std::optional<std::string> CleanupRun::aptGet(std::string_view command) {
    const auto tool = OZTask::launchPathForExecutable(_device, "apt-get");
    if (!tool) {
        return std::nullopt;
    }
    return outputOf(_device, *tool, {_mode == OZCoreMode::clean ? "-y" : "-s", std::string(command)});
}

void CleanupRun::dpkg(std::vector<std::string> arguments) {
    const auto tool = OZTask::launchPathForExecutable(_device, "dpkg");
    if (tool && _mode == OZCoreMode::clean) {
        OZTask::launchSyncTask(_device, *tool, std::move(arguments), true);
    }
}

std::string CleanupRun::packageList() {
    const auto tool = OZTask::launchPathForExecutable(_device, "dpkg");
    return tool ? outputOf(_device, *tool, {"-l"}) : "";
}
