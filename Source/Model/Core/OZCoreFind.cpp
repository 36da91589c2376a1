#include "Model/Core/OZCore.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device.h"

namespace {

// The tool's paths end in a NUL byte, the one character that no name holds: a name with a line break in it
// must not read as two paths, the second of which may be somebody else's.
std::vector<std::string> withSafeSeparator(std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments.back() == "-print") {
        arguments.pop_back();
    }
    arguments.emplace_back("-print0");
    return arguments;
}

} // namespace

platform::FoundPaths OZCore::find(const std::vector<std::string>& arguments) {
    OZ_REQUIRE(!arguments.empty());
    const auto launchPath = OZTask::launchPathForExecutable(_device, "find");
    // The folder is opened before the search, so that what is found is acted on where it was found.
    auto folder = folderAtPath(arguments.front());
    if (!launchPath || !folder) {
        return {};
    }
    const auto task = OZTask::make(_device, *launchPath, withSafeSeparator(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::discard);
    task->launchSynchronously();
    platform::FoundPaths found{
        .folder = *folder, .prefix = platform::pathPrefix(arguments.front()), .names = {}};
    std::string_view output = task->outputBytes();
    while (!output.empty()) {
        const size_t end = std::min(output.find('\0'), output.size());
        const std::string_view path = output.substr(0, end);
        output.remove_prefix(std::min(end + 1, output.size()));
        if (path.size() > found.prefix.size() && path.starts_with(found.prefix)) {
            found.names.emplace_back(path.substr(found.prefix.size()));
        }
    }
    return found;
}
