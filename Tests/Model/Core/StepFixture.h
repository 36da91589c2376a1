#pragma once

#include "Model/Apps/OZAppList.h"
#include "Model/Core/OZCore.h"
#include "Tests/Support/TemporaryDevice.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// An application as a device's facts list it; its bundle is "/Applications/<identifier>.app".
struct ListedApp {
    std::string identifier;
    std::string name;
    std::string type = "User";
    /// None for a system application that has none.
    std::string container = "/c/" + identifier;
    platform::Dictionary groups{};
    platform::Dictionary plugins{};
};

/// An engine with applications, its log and a killall that notes its calls, for runs of whole steps.
class StepFixture {
  public:
    explicit StepFixture(double foundationVersion = 1445.32, const std::vector<ListedApp>& listedApps = {});

    void addFiles(const std::vector<std::string>& paths) {
        for (const auto& path : paths) {
            device.addFile(path, "12345");
        }
    }
    /// Runs one step alone, with the number that switches it on. Standard output is no terminal meanwhile.
    void run(std::string_view step, OZCoreMode mode = OZCoreMode::clean, uint64_t number = 1);
    /// Runs the steps with whatever standard output is.
    void run(const platform::Dictionary& settings, OZCoreMode mode);

    /// Every file and link of the tree but the log and the bundles, and every empty folder with a "/" at its
    /// end.
    [[nodiscard]] std::set<std::string> tree() const;
    [[nodiscard]] bool exists(std::string_view path) const;
    /// The log behind its summary and the step's heading.
    [[nodiscard]] std::string body() const;
    /// The items and directories that the log names, in its order.
    [[nodiscard]] std::vector<std::string> loggedPaths() const;

    TemporaryDevice device;
    std::unique_ptr<OZAppList> apps;
    std::unique_ptr<OZCore> core;
};

/// Stands in for standard output during its life.
class StandardOutput {
  public:
    explicit StandardOutput(const std::string& path);
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput();

  private:
    int _saved;
};

inline constexpr OZCoreMode allModes[] = {OZCoreMode::analyze, OZCoreMode::test, OZCoreMode::clean};

} // namespace tests
