#include "Tests/Support/EngineFixture.h"

#include "Tests/Support/StandardOutput.h"

#include <sstream>

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

EngineFixture::EngineFixture(double foundationVersion, const std::vector<ListedApp>& listedApps)
    : device(factsWith(foundationVersion, listedApps)) {
    for (const auto& app : listedApps) {
        const platform::Dictionary info{{"CFBundleIconFile", "icon.png"}};
        device.addFile(bundleOf(app) + "/" + app.name);
        device.addFile(bundleOf(app) + "/Info.plist",
                       platform::serializePropertyList(info, platform::PropertyListFormat::xml));
        if (app.hasIcon) {
            device.addFile(bundleOf(app) + "/icon.png");
        }
    }
    device.addNotingTool("/usr/bin/killall");
    apps = std::make_unique<OZAppList>(device.device());
    core = std::make_unique<OZCore>(device.device(), *apps, languages.manager);
    core->setCleanupLogger(std::make_unique<OZCleanupLogger>(device.device()));
}

void EngineFixture::addFiles(const std::vector<std::string>& paths) {
    for (const auto& path : paths) {
        device.addFile(path, "12345");
    }
}

void EngineFixture::enter(OZCoreMode mode) {
    run(platform::Dictionary{}, mode);
    core->cleanupLogger()->deleteLogFile();
}

void EngineFixture::clean(const std::vector<std::string_view>& steps, OZCoreMode mode) {
    platform::Dictionary settings;
    for (const auto step : steps) {
        settings[std::string(step)] = true;
    }
    run(settings, mode);
}

void EngineFixture::run(std::string_view step, OZCoreMode mode, uint64_t number) {
    const StandardOutput nowhere("/dev/null");
    run({{std::string(step), number}}, mode);
}

void EngineFixture::run(const platform::Dictionary& settings, OZCoreMode mode) {
    core->choices().setTestMode(mode == OZCoreMode::test);
    core->clean(&settings, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
}

std::set<std::string> EngineFixture::tree() const {
    std::set<std::string> tree = leavesOf(device);
    std::erase_if(tree, [](const std::string& path) { return path.starts_with("/Applications"); });
    return tree;
}

bool EngineFixture::exists(std::string_view path) const {
    return fs::exists(fs::symlink_status(device.hostPath(path)));
}

std::string EngineFixture::body() const {
    const std::string text = log();
    const size_t sizeLine = text.find(" size: ");
    const size_t heading = text.find("##\n\n", text.find('\n', sizeLine));
    return heading == std::string::npos ? text : text.substr(heading + 4);
}

std::vector<std::string> EngineFixture::loggedPaths() const {
    return pathsNamedBy(log());
}

std::vector<std::string> EngineFixture::loggedItems() const {
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

std::set<std::string> leavesOf(const TemporaryDevice& device) {
    std::set<std::string> leaves;
    const fs::path root = device.hostPath("/");
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = "/" + entry.path().lexically_relative(root).string();
        if (path.starts_with("/var/mobile/Library/Ozvarine")) {
            continue;
        }
        if (entry.is_symlink() || !entry.is_directory()) {
            leaves.insert(path);
        } else if (fs::is_empty(entry)) {
            leaves.insert(path + "/");
        }
    }
    return leaves;
}

std::vector<std::string> pathsNamedBy(const std::string& log) {
    std::vector<std::string> paths;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('/') || line.starts_with("./")) {
            paths.push_back(line);
        }
    }
    return paths;
}

} // namespace tests
