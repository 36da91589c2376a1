#pragma once

#include "Tests/Support/EngineFixture.h"

#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// A test of engines on one small tree, each on a device with facts of its own. Searches run the host's own
/// tools, which need root or a user namespace that maps it.
class EngineTest : public testing::Test {
  protected:
    using Tree = std::set<std::string>;
    using Paths = std::vector<std::string>;

    void SetUp() override;

    void addFiles(const Paths& paths, std::string_view content = "12345");
    /// Puts an application into the tree and into the inventory of the next device.
    void addApp(const std::string& identifier, OZAppType type, const std::string& bundlePath,
                const std::string& container = "");

    /// Opens the tree as a device of the present facts, with an inventory and an engine that logs. The engine
    /// is in the mode that a run with every step off has left it in.
    OZCore& engine(OZCoreMode mode = OZCoreMode::clean);
    /// By the inventory of the last engine.
    void cleanKnownApp(OZCore& core, std::string_view identifier);
    [[nodiscard]] OZAppList& appList() { return *_appList; }

    /// The tree's leaves, without the log.
    [[nodiscard]] Tree tree() const { return tests::leavesOf(temporary); }
    [[nodiscard]] std::string log() const { return temporary.contents(OZCleanupLogger::logFilePath); }
    /// What the log names, in its order.
    [[nodiscard]] Paths loggedPaths() const { return tests::pathsNamedBy(log()); }

    TemporaryDevice temporary;
    platform::DeviceFacts facts{.foundationVersion = 1445.32, .applications = platform::Array{}};

  private:
    std::unique_ptr<platform::Device> _device;
    std::unique_ptr<OZAppList> _appList;
    std::unique_ptr<tests::NoLanguages> _languages;
    std::unique_ptr<OZCore> _core;
};

/// What is in the first and not in the second.
std::set<std::string> difference(const std::set<std::string>& first, const std::set<std::string>& second);
std::set<std::string> united(std::initializer_list<std::set<std::string>> trees);
