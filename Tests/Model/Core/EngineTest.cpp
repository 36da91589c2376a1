#include "Tests/Model/Core/EngineTest.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include <unistd.h>

namespace fs = std::filesystem;

void EngineTest::SetUp() {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, or a user namespace that maps it";
    }
}

void EngineTest::addApp(const std::string& identifier, OZAppType type, const std::string& bundlePath,
                        const std::string& container) {
    temporary.addFile(bundlePath + "/program", "program");
    platform::Dictionary info{{"ApplicationType", type == OZAppType::user ? "User" : "System"},
                              {"Path", bundlePath},
                              {"CFBundleExecutable", "program"},
                              {"CFBundleIdentifier", identifier}};
    if (!container.empty()) {
        info["Container"] = container;
    }
    facts.applications->push_back(info);
}

OZCore& EngineTest::engine(OZCoreMode mode) {
    const auto folder = temporary.folder();
    _core.reset();
    _appList.reset();
    _device =
        std::make_unique<platform::Device>(platform::FileManager::atRoot(folder / "Root").value(), facts,
                                           platform::ToolTable(folder / "Tools", folder, folder / "Root"));
    _appList = std::make_unique<OZAppList>(*_device);
    _core = std::make_unique<OZCore>(*_device, _appList.get(), nullptr);
    _core->setCleanupLogger(std::make_unique<OZCleanupLogger>(*_device));
    _core->setTestMode(mode == OZCoreMode::test);
    const platform::Dictionary nothing;
    _core->clean(&nothing, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
    return *_core;
}

void EngineTest::addFiles(const Paths& paths, std::string_view content) {
    for (const auto& path : paths) {
        temporary.addFile(path, content);
    }
}

EngineTest::Tree EngineTest::tree() const {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(temporary.hostPath("/"))) {
        const std::string path = "/" + entry.path().lexically_relative(temporary.hostPath("/")).string();
        if (path.starts_with("/var/mobile/Library/Ozvarine")) {
            continue;
        }
        if (entry.is_symlink() || !entry.is_directory()) {
            tree.insert(path);
        } else if (fs::is_empty(entry)) {
            tree.insert(path + "/");
        }
    }
    return tree;
}

EngineTest::Paths EngineTest::loggedPaths() const {
    Paths paths;
    std::istringstream lines(log());
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('/') || line.starts_with("./")) {
            paths.push_back(line);
        }
    }
    return paths;
}

std::set<std::string> difference(const std::set<std::string>& first, const std::set<std::string>& second) {
    std::set<std::string> difference;
    std::ranges::set_difference(first, second, std::inserter(difference, difference.end()));
    return difference;
}

std::set<std::string> united(std::initializer_list<std::set<std::string>> trees) {
    std::set<std::string> united;
    for (const auto& tree : trees) {
        united.insert(tree.begin(), tree.end());
    }
    return united;
}
