#include "Model/Core/OZCore.h"
#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/SeparatedPieces.h"
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

// The folder that a path was found in, or none. The tool searches the folders one after the other, and so it
// is the current one or one behind it.
std::vector<FoundPaths>::iterator homeOf(std::string_view path, std::vector<FoundPaths>::iterator current,
                                         std::vector<FoundPaths>::iterator end) {
    return std::find_if(current, end, [&](const FoundPaths& folder) {
        return path.size() > folder.prefix.size() && path.starts_with(folder.prefix);
    });
}

} // namespace

FoundPaths OZCore::find(const std::vector<std::string>& arguments) {
    OZ_REQUIRE(!arguments.empty());
    auto found = find(Paths{arguments.front()}, {arguments.begin() + 1, arguments.end()});
    return found.empty() ? FoundPaths{} : std::move(found.front());
}

std::vector<FoundPaths> OZCore::find(const Paths& folders, const std::vector<std::string>& predicates) {
    return search(folders, predicates,
                  [](FoundPaths& home, std::string_view name) { home.names.emplace_back(name); });
}

std::vector<FoundPaths> OZCore::search(const Paths& folders, const std::vector<std::string>& predicates,
                                       const FoundHandler& handler) {
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
    // What no separator ends is half a path, left by a tool that broke off, and may name another item.
    SeparatedPieces paths(std::string(1, '\0'));
    auto current = found.begin();
    task->setOutputHandler([&](std::string_view part) {
        paths.add(part, [&](std::string_view path) {
            if (const auto home = homeOf(path, current, found.end()); home != found.end()) {
                handler(*home, path.substr(home->prefix.size()));
                current = home;
            }
        });
    });
    task->launchSynchronously();
    return found;
}
