#include "Model/Tasks/OZTaskManager.h"

#include "Model/Tasks/OZTask.h"

long OZTaskManager::killTaskWithName(platform::Device& device, const std::string& name, long signal) {
    return killTasksWithNames(device, {name}, signal);
}

long OZTaskManager::killTasksWithNames(platform::Device& device, const std::vector<std::string>& names,
                                       long signal) {
    const auto path = OZTask::launchPathForExecutable(device, "killall");
    if (!path || names.empty()) {
        return 1;
    }
    std::vector<std::string> arguments = {"-" + std::to_string(signal)};
    arguments.insert(arguments.end(), names.begin(), names.end());
    const auto task = OZTask::make(device, *path, std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::discard);
    task->setStdErrAction(OZTaskStreamAction::discard);
    return task->launchSynchronously() ? task->terminationStatus() : 1;
}
