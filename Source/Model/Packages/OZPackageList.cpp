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
    const std::string_view answer = task->output() ? *task->output() : std::string_view();
    PackagesByPath packages;
    for (const auto& [path, identifiers] : parseFileOwners(answer)) {
        packages.insert_or_assign(std::string(path),
                                  packagesWithIdentifiers({identifiers.begin(), identifiers.end()}));
    }
    return packages;
}
