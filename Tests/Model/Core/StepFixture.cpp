#include "Tests/Model/Core/StepFixture.h"

#include <cstdio>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace tests {

namespace {

std::string bundleOf(const ListedApp& app) {
    return "/Applications/" + app.identifier + ".app";
}

platform::Dictionary infoOf(const ListedApp& app) {
    platform::Dictionary info{{"Path", bundleOf(app)},
                              {"CFBundleExecutable", app.name},
                              {"CFBundleIdentifier", app.identifier},
                              {"CFBundleDisplayName", app.name},
                              {"ApplicationType", app.type}};
    if (!app.container.empty()) {
        info["Container"] = app.container;
    }
    if (!app.groups.empty()) {
        info["GroupDataContainers"] = app.groups;
    }
    if (!app.plugins.empty()) {
        info["PluginDataContainers"] = app.plugins;
    }
    return info;
}

platform::DeviceFacts factsWith(double foundationVersion, const std::vector<ListedApp>& apps) {
    platform::DeviceFacts facts{.foundationVersion = foundationVersion, .applications = platform::Array{}};
    for (const auto& app : apps) {
        facts.applications->emplace_back(infoOf(app));
    }
    return facts;
}

} // namespace

StepFixture::StepFixture(double foundationVersion, const std::vector<ListedApp>& listedApps)
    : device(factsWith(foundationVersion, listedApps)) {
    for (const auto& app : listedApps) {
        device.addFile(bundleOf(app) + "/" + app.name);
    }
    device.addNotingTool("/usr/bin/killall");
    apps = std::make_unique<OZAppList>(device.device());
    core = std::make_unique<OZCore>(device.device(), apps.get(), nullptr);
    core->setCleanupLogger(std::make_unique<OZCleanupLogger>(device.device()));
}

void StepFixture::run(std::string_view step, OZCoreMode mode, uint64_t number) {
    const StandardOutput nowhere("/dev/null");
    run({{std::string(step), number}}, mode);
}

void StepFixture::run(const platform::Dictionary& settings, OZCoreMode mode) {
    core->setTestMode(mode == OZCoreMode::test);
    core->clean(&settings, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
}

std::set<std::string> StepFixture::tree() const {
    std::set<std::string> paths;
    const fs::path root = device.folder() / "Root";
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = "/" + entry.path().lexically_relative(root).string();
        const bool isFolder = !entry.is_symlink() && entry.is_directory();
        if (path.starts_with("/var/mobile/Library/Ozvarine") || path.starts_with("/Applications") ||
            (isFolder && !fs::is_empty(entry))) {
            continue;
        }
        paths.insert(isFolder ? path + "/" : path);
    }
    return paths;
}

bool StepFixture::exists(std::string_view path) const {
    return fs::exists(fs::symlink_status(device.hostPath(path)));
}

std::string StepFixture::body() const {
    const std::string log = device.contents(OZCleanupLogger::logFilePath);
    const size_t sizeLine = log.find(" size: ");
    const size_t heading = log.find("##\n\n", log.find('\n', sizeLine));
    return heading == std::string::npos ? log : log.substr(heading + 4);
}

std::vector<std::string> StepFixture::loggedPaths() const {
    std::vector<std::string> paths;
    std::istringstream lines(body());
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("In dir: ")) {
            paths.push_back(line.substr(8) + ":");
        } else if (!line.empty() && line != "##") {
            paths.push_back(line);
        }
    }
    return paths;
}

StandardOutput::StandardOutput(const std::string& path) {
    std::fflush(stdout);
    _saved = ::dup(STDOUT_FILENO);
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_CLOEXEC, 0600);
    ::dup2(file, STDOUT_FILENO);
    ::close(file);
}

StandardOutput::~StandardOutput() {
    std::fflush(stdout);
    ::dup2(_saved, STDOUT_FILENO);
    ::close(_saved);
}

} // namespace tests
