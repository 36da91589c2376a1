#include "Tests/Model/Core/EngineTest.h"

#include "Model/Core/Removal/KnownApps.h"

#include <algorithm>
#include <iterator>

#include <unistd.h>

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
    _languages.reset();
    _appList.reset();
    _device =
        std::make_unique<platform::Device>(platform::FileManager::atRoot(folder / "Root").value(), facts,
                                           platform::ToolTable(folder / "Tools", folder, folder / "Root"));
    _appList = std::make_unique<OZAppList>(*_device);
    _languages = std::make_unique<tests::NoLanguages>(*_device);
    _core = std::make_unique<OZCore>(*_device, *_appList, _languages->manager);
    _core->setCleanupLogger(std::make_unique<OZCleanupLogger>(*_device));
    _core->choices().setTestMode(mode == OZCoreMode::test);
    const platform::Dictionary nothing;
    _core->clean(&nothing, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
    return *_core;
}

void EngineTest::cleanKnownApp(OZCore& core, std::string_view identifier) {
    ::cleanKnownApp(core.run(), *_appList, identifier);
}

void EngineTest::addFiles(const Paths& paths, std::string_view content) {
    for (const auto& path : paths) {
        temporary.addFile(path, content);
    }
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
