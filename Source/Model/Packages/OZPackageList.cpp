#include "Model/Packages/OZPackageList.h"

#include "Model/Packages/FileOwners.h"
#include "Model/Packages/OZPackageGraph.h"
#include "Model/Tasks/OZTask.h"

namespace {

std::shared_ptr<OZTask> taskReadingOutput(platform::Device& device, std::string_view tool,
                                          std::vector<std::string> arguments,
                                          std::function<void(std::string_view part)> handler = {}) {
    auto task = OZTask::make(device, tool, std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->setStdErrAction(OZTaskStreamAction::discard);
    task->setOutputHandler(std::move(handler));
    std::ignore = task->launchSynchronously();
    return task;
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
    const auto graph = std::make_shared<OZPackageGraph>(_device);
    const auto task = taskReadingOutput(_device, *tool, {"-W", "-f=" + OZPackageGraph::queryFormat()},
                                        [&](std::string_view part) { graph->read(part); });
    if (task->terminationStatus() != 0) {
        return;
    }
    _graph = graph->link() ? graph : nullptr;
}

void OZPackageList::ensureGraph() {
    if (!_graph) {
        refreshPackages();
    }
}

std::shared_ptr<OZPackage> OZPackageList::knownPackage(std::string_view identifier) const {
    OZPackage* const package = _graph ? _graph->packageWithIdentifier(identifier) : nullptr;
    return package == nullptr ? nullptr : std::shared_ptr<OZPackage>(_graph, package);
}

template <class Identifiers>
OZPackageList::Packages OZPackageList::knownPackages(const Identifiers& identifiers) const {
    Packages packages;
    for (const auto& identifier : identifiers) {
        if (auto package = knownPackage(identifier)) {
            packages.push_back(std::move(package));
        }
    }
    return packages;
}

OZPackageList::PackagesByIdentifier OZPackageList::allPackages() {
    ensureGraph();
    PackagesByIdentifier all;
    if (_graph) {
        for (OZPackage& package : _graph->packages()) {
            all.emplace(package.identifier(), std::shared_ptr<OZPackage>(_graph, &package));
        }
    }
    return all;
}

std::shared_ptr<OZPackage> OZPackageList::packageWithIdentifier(std::string_view identifier) {
    ensureGraph();
    return knownPackage(identifier);
}

OZPackageList::Packages OZPackageList::packagesWithIdentifiers(const std::vector<std::string>& identifiers) {
    ensureGraph();
    return knownPackages(identifiers);
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
    const auto files = parseFileOwners(task->outputBytes());
    if (!files.empty()) {
        ensureGraph();
    }
    PackagesByPath packages;
    for (const auto& [path, identifiers] : files) {
        packages.insert_or_assign(std::string(path), knownPackages(identifiers));
    }
    return packages;
}
