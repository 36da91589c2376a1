#include "Model/Core/CleanupRun.h"
#include "Model/Core/RunRecord.h"
#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/SeparatedPieces.h"
#include "Platform/Device/Device.h"

#include <algorithm>

#include <fmt/format.h>

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

// The folder that a path was found in, by the texts that the tool puts before its names, or none. The tool
// searches the folders one after the other, and so it is the current one or one behind it.
size_t homeOf(std::string_view path, size_t current, const CleanupRun::Paths& prefixes) {
    const auto home = std::find_if(
        prefixes.begin() + static_cast<ptrdiff_t>(current), prefixes.end(),
        [&](const std::string& prefix) { return path.size() > prefix.size() && path.starts_with(prefix); });
    return static_cast<size_t>(home - prefixes.begin());
}

} // namespace

FoundPaths CleanupRun::find(const std::vector<std::string>& arguments) {
    OZ_REQUIRE(!arguments.empty());
    auto found = find(Paths{arguments.front()}, {arguments.begin() + 1, arguments.end()});
    return found.empty() ? FoundPaths{} : std::move(found.front());
}

std::vector<FoundPaths> CleanupRun::find(const Paths& folders, const std::vector<std::string>& predicates) {
    return search(folders, predicates,
                  [](FoundPaths& home, std::string_view name) { home.names.emplace_back(name); });
}

std::vector<FoundPaths> CleanupRun::search(const Paths& folders, const std::vector<std::string>& predicates,
                                           const FoundHandler& handler) {
    const auto launchPath = OZTask::launchPathForExecutable(_device, "find");
    if (!launchPath) {
        _record.stayedItems().addFailedSearch("there is no \"find\"");
        return {};
    }
    std::vector<std::string> arguments;
    std::vector<FoundPaths> found;
    Paths toolPrefixes;
    for (const auto& path : folders) {
        // Folders are opened before the search, so that what is found is acted on where it was found.
        const bool isExpression = readsAsExpression(path);
        auto folder = isExpression ? platform::failure(EINVAL) : _files.folderAtPath(path);
        if (folder) {
            arguments.push_back(_files.pathForTools(path));
            toolPrefixes.push_back(platform::pathPrefix(arguments.back()));
            found.push_back(FoundPaths(std::move(*folder), path));
        } else if (!isExpression) {
            noteUnreached(path, folder.error());
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
    size_t current = 0;
    task->setOutputHandler([&](std::string_view part) {
        paths.add(part, [&](std::string_view path) {
            if (const size_t home = homeOf(path, current, toolPrefixes); home < found.size()) {
                handler(found[home], path.substr(toolPrefixes[home].size()));
                current = home;
            }
        });
    });
    // With 1 the tool has passed over what it could not read, as everybody does here.
    constexpr long mostPassedOver = 1;
    if (!task->launchSynchronously()) {
        _record.stayedItems().addFailedSearch("\"find\" could not be run to its end");
    } else if (task->terminationStatus() > mostPassedOver) {
        _record.stayedItems().addFailedSearch(
            fmt::format("\"find\" ended with status {}", task->terminationStatus()));
    }
    return found;
}

std::vector<std::string> CleanupRun::patternsToPrune(std::vector<std::string> patterns,
                                                     std::span<const std::string_view> countedFolders) const {
    if (_mode == OZCoreMode::analyze) {
        patterns.insert(patterns.end(), countedFolders.begin(), countedFolders.end());
    }
    return patterns;
}
