#pragma once

#include "Model/Apps/OZAppList.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Support/TemporaryDevice.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

inline constexpr OZCoreMode allModes[] = {OZCoreMode::analyze, OZCoreMode::test, OZCoreMode::clean};

/// An application as a device's facts list it; its bundle is "/Applications/<identifier>.app".
struct ListedApp {
    std::string identifier;
    std::string name;
    std::string type = "User";
    /// None for a system application that has none.
    std::string container = "/c/" + identifier;
    platform::Dictionary groups{};
    platform::Dictionary plugins{};
    bool hasIcon = true;
};

/// What an engine knows of languages without any resources of the program: a device that speaks English.
struct NoLanguages {
    explicit NoLanguages(platform::Device& device)
        : manager(device, device.standardUserDefaults(), resources) {}

    platform::Bundle resources{std::filesystem::path()};
    OZLocalizationManager manager;
};

/// An engine with its log, applications and a killall that notes its calls, on a small device of some
/// generation.
class EngineFixture {
  public:
    explicit EngineFixture(double foundationVersion = 1445.32, const std::vector<ListedApp>& listedApps = {});

    void addFiles(const std::vector<std::string>& paths);

    /// Puts the engine into a mode by way of a run with every step off.
    void enter(OZCoreMode mode);
    /// Runs the given steps alone.
    void clean(const std::vector<std::string_view>& steps, OZCoreMode mode = OZCoreMode::clean);
    /// Runs one step alone, with the number that switches it on. Standard output is no terminal meanwhile.
    void run(std::string_view step, OZCoreMode mode = OZCoreMode::clean, uint64_t number = 1);
    /// Runs the steps with whatever standard output is.
    void run(const platform::Dictionary& settings, OZCoreMode mode);

    /// The tree's leaves but the bundles.
    [[nodiscard]] std::set<std::string> tree() const;
    [[nodiscard]] bool exists(std::string_view path) const;
    [[nodiscard]] std::string log() const { return device.contents(OZCleanupLogger::logFilePath); }
    /// The log behind its summary and the step's heading.
    [[nodiscard]] std::string body() const;
    /// The paths that the log names, in their order.
    [[nodiscard]] std::vector<std::string> loggedPaths() const;
    /// The items of the log's body, in their order; the directory that some lie in comes first, with a ":".
    [[nodiscard]] std::vector<std::string> loggedItems() const;

    [[nodiscard]] CleanupChoices& choices() const { return core->choices(); }
    /// The last run, for its primitives.
    [[nodiscard]] CleanupRun& run() const { return core->run(); }

    TemporaryDevice device;
    std::unique_ptr<OZAppList> apps;
    NoLanguages languages{device.device()};
    std::unique_ptr<OZCore> core;
};

/// Every file and link of a tree but the program's own, and every empty folder with a "/" at its end.
std::set<std::string> leavesOf(const TemporaryDevice& device);
/// A log's lines that begin with a path.
std::vector<std::string> pathsNamedBy(const std::string& log);

} // namespace tests
