#include "Model/Packages/OZPackageList.h"

#include "Categories/NSStringAdditions.h"
#include "Model/Packages/OZPackageGraph.h"
#include "Model/Packages/TextLines.h"
#include "Model/Tasks/OZTask.h"

#include <unicode/uniset.h>

namespace {

std::shared_ptr<OZTask> taskReadingOutput(platform::Device& device, std::string_view tool,
                                          std::vector<std::string> arguments) {
    auto task = OZTask::make(device, tool, std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::discard);
    std::ignore = task->launchSynchronously();
    return task;
}

/// "package, package" as texts.
std::vector<std::string> splitIdentifiers(std::string_view text) {
    constexpr std::string_view separator = ", ";
    std::vector<std::string> identifiers;
    for (size_t end = 0; end != std::string_view::npos;) {
        end = text.find(separator);
        identifiers.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    }
    return identifiers;
}

struct OwnersLine {
    std::string_view identifiers;
    std::string_view path;
};

std::optional<OwnersLine> parseOwners(std::string_view line) {
    constexpr std::string_view separator = ": ";
    const size_t split = line.find(separator);
    if (split == std::string_view::npos || split + separator.size() == line.size()) {
        return std::nullopt;
    }
    return OwnersLine{.identifiers = line.substr(0, split), .path = line.substr(split + separator.size())};
}

} // namespace

OZPackageList::OZPackageList(platform::Device& device)
    : _device(device) {}

OZPackageList::~OZPackageList() = default;

void OZPackageList::refreshPackages() {
    const auto tool = OZTask::launchPathForExecutable(_device, "dpkg-query");
    if (!tool) {
        return;
    }
    const auto task = taskReadingOutput(_device, *tool, {"-W", "-f=" + OZPackageGraph::queryFormat()});
    if (task->terminationStatus() != 0) {
        return;
    }
    const auto& output = task->output();
    const bool hasPackages = output && !output->empty();
    _graph = hasPackages ? std::make_shared<OZPackageGraph>(_device, *output) : nullptr;
}

OZPackageGraph* OZPackageList::graph() {
    if (!_graph) {
        refreshPackages();
    }
    return _graph.get();
}

OZPackageList::PackagesByIdentifier OZPackageList::allPackages() {
    PackagesByIdentifier all;
    if (graph() != nullptr) {
        for (OZPackage& package : _graph->packages()) {
            all.emplace(package.identifier(), std::shared_ptr<OZPackage>(_graph, &package));
        }
    }
    return all;
}

std::shared_ptr<OZPackage> OZPackageList::packageWithIdentifier(std::string_view identifier) {
    OZPackage* const package = graph() == nullptr ? nullptr : _graph->packageWithIdentifier(identifier);
    return package == nullptr ? nullptr : std::shared_ptr<OZPackage>(_graph, package);
}

OZPackageList::Packages OZPackageList::packagesWithIdentifiers(const std::vector<std::string>& identifiers) {
    Packages packages;
    for (const std::string& identifier : identifiers) {
        if (auto package = packageWithIdentifier(identifier)) {
            packages.push_back(std::move(package));
        }
    }
    return packages;
}

std::optional<OZPackageList::Packages> OZPackageList::packagesForFileAtPath(std::string_view path) {
    const auto packages = packagesForFilesAtPaths({std::string(path)});
    if (!packages) {
        return std::nullopt;
    }
    const auto found = packages->find(path);
    return found == packages->end() ? std::nullopt : std::optional(found->second);
}

std::optional<OZPackageList::PackagesByPath>
OZPackageList::packagesForFilesAtPaths(const std::vector<std::string>& paths) {
    const auto tool = OZTask::launchPathForExecutable(_device, "dpkg");
    if (!tool || paths.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> arguments = paths;
    arguments.insert(arguments.begin(), "-S");
    const auto task = taskReadingOutput(_device, *tool, std::move(arguments));
    PackagesByPath packages;
    std::string_view output = task->output() ? *task->output() : std::string_view();
    while (!output.empty()) {
        const std::string_view line = takeLine(output, newlineCharacterSet());
        if (const auto owners =
                parseOwners(stringByTrimmingCharactersInSet(line, whitespaceAndNewlineCharacterSet()))) {
            packages.insert_or_assign(std::string(owners->path),
                                      packagesWithIdentifiers(splitIdentifiers(owners->identifiers)));
        }
    }
    return packages;
}
