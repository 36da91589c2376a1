#include "Platform/Device/Application.h"

#include <cstdlib>
#include <utility>

namespace platform {

Application::Application(ApplicationOperations operations)
    : _operations(std::move(operations)) {}

void Application::close() {
    if (_operations.suspend) {
        _operations.suspend();
    } else {
        exit();
    }
}

void Application::exit() {
    if (_operations.terminateWithSuccess) {
        _operations.terminateWithSuccess();
    } else if (_operations.exit) {
        _operations.exit(EXIT_SUCCESS);
    } else {
        std::exit(EXIT_SUCCESS);
    }
}

void Application::prepareToClose() {
    if (_operations.synchronizeDefaults) {
        _operations.synchronizeDefaults();
    }
}

void Application::runInBackground(bool flag) {
    if (flag) {
        if (_operations.beginBackgroundTask) {
            _backgroundTask = _operations.beginBackgroundTask([this] { runInBackground(false); });
        }
    } else if (_backgroundTask != invalidBackgroundTask) {
        _operations.endBackgroundTask(std::exchange(_backgroundTask, invalidBackgroundTask));
    }
}

} // namespace platform
