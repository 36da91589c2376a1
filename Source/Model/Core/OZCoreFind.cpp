#include "Model/Core/OZCore.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device.h"

#include <algorithm>

using platform::FoundPaths;

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

// The tool reads such a word as the beginning of its expression, wherever it stands.
bool readsAsExpression(std::string_view folder) {
    return folder.empty() || std::string_view("-(),!").contains(folder.front());
}

// Gives each path to the folder that it was found in. The tool searches the folders one after the other. What
// no separator ends is half a path, left by a tool that broke off, and may name another item.
void sortInto(std::vector<FoundPaths>& found, std::string_view output) {
    auto current = found.begin();
    for (size_t end = 0; (end = output.find('\0')) != std::string_view::npos; output.remove_prefix(end + 1)) {
        const std::string_view path = output.substr(0, end);
        const auto home = std::find_if(current, found.end(), [&](const FoundPaths& folder) {
            return path.size() > folder.prefix.size() && path.starts_with(folder.prefix);
        });
        if (home != found.end()) {
            home->names.emplace_back(path.substr(home->prefix.size()));
            current = home;
        }
    }
}

} // namespace

FoundPaths OZCore::find(const std::vector<std::string>& arguments) {
    OZ_REQUIRE(!arguments.empty());
    auto found = find(Paths{arguments.front()}, {arguments.begin() + 1, arguments.end()});
    return found.empty() ? FoundPaths{} : std::move(found.front());
}

std::vector<FoundPaths> OZCore::find(const Paths& folders, const std::vector<std::string>& predicates) {
    const auto launchPath = OZTask::launchPathForExecutable(_device, "find");
    if (!launchPath) {
        return {};
    }
    std::vector<std::string> arguments;
    std::vector<FoundPaths> found;
    for (const auto& path : folders) {
        // Folders are opened before the search, so that what is found is acted on where it was found.
        auto folder = readsAsExpression(path) ? platform::failure(EINVAL) : folderAtPath(path);
        if (folder) {
            arguments.push_back(path);
            found.push_back(
                {.folder = std::move(*folder), .prefix = platform::pathPrefix(path), .names = {}});
        }
    }
    if (found.empty()) {
        return {};
    }
    arguments.insert(arguments.end(), predicates.begin(), predicates.end());
    const auto task = OZTask::make(_device, *launchPath, withSafeSeparator(std::move(arguments)));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::discard);
    task->launchSynchronously();
    sortInto(found, task->outputBytes());
    return found;
}
