#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::UnorderedElementsAre;
using tests::EngineFixture;

namespace {

constexpr const char* outside = "/outside/report";
const std::string crashReporter = "/var/mobile/Library/Logs/CrashReporter/";

void addLogs(EngineFixture& fixture) {
    fixture.addFiles({"/var/mobile/Library/Logs/a/b", crashReporter + "own", outside, "/outside/kept/file",
                      "/var/log/x", "/var/logs/y/z", "/var/wireless/Library/Logs/w"});
    fixture.device.addLink(crashReporter + "link", outside);
    fixture.device.addLink(crashReporter + "sub/chain", "../link");
    fixture.device.addLink(crashReporter + "dangling", "/nowhere/at/all");
    fixture.device.addLink(crashReporter + "folder", "/outside/kept");
    fixture.device.addLink(crashReporter + "out", (fixture.device.folder() / "host file").string());
    std::ofstream(fixture.device.folder() / "host file") << "not the device's";
}

} // namespace

TEST(LogStep, TakesLinkedCrashReportsWithTheirLinks) {
    EngineFixture fixture;
    addLogs(fixture);
    fixture.run(cleanupstep::logFiles);
    EXPECT_THAT(fixture.tree(), UnorderedElementsAre("/var/mobile/Library/Logs/a/", crashReporter + "sub/",
                                                     "/outside/kept/file", "/var/log/", "/var/logs/y/",
                                                     "/var/wireless/Library/Logs/"));
    // The links themselves are not counted.
    EXPECT_THAT(fixture.loggedItems(),
                UnorderedElementsAre("/var/mobile/Library/Logs/a/b", crashReporter + "own", outside,
                                     "/var/logs/y/z", "/var/log/x", "/var/wireless/Library/Logs/w"));
    EXPECT_TRUE(std::filesystem::exists(fixture.device.folder() / "host file"));
}

TEST(LogStep, OtherModesLeaveTheLinks) {
    EngineFixture fixture;
    addLogs(fixture);
    const auto before = fixture.tree();
    fixture.run(cleanupstep::logFiles, OZCoreMode::analyze);
    EXPECT_EQ(fixture.tree(), before);
    // Two links lead to one report, which stays and is met twice.
    EXPECT_EQ(fixture.core->fileCount(), 7);
    EXPECT_EQ(fixture.core->freedSpace(), 7 * 5);
    fixture.run(cleanupstep::logFiles, OZCoreMode::test);
    EXPECT_EQ(fixture.core->fileCount(), 6);
    EXPECT_TRUE(fixture.exists("/outside/report.OzvarineBackup"));
    EXPECT_TRUE(fixture.exists(crashReporter + "link"));
    EXPECT_TRUE(fixture.exists(crashReporter + "dangling"));
}
