// A run of the engine in which one call to the system fails: it ends as it should, and nobody's data suffers.
#include "Model/Core/CleanupSteps.h"
#include "Tests/Faults/EveryFault.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;
using tests::EngineFixture;
using tests::everyFault;
using tests::missingFrom;
using tests::treeOf;
using tests::Trial;

namespace {

const std::vector<std::string_view> steps = {cleanupstep::logFiles, cleanupstep::cacheFiles,
                                             cleanupstep::tempFiles, cleanupstep::fileTypeCleanup,
                                             cleanupstep::customFiles};

class EngineFaults : public testing::Test {
  protected:
    /// A device with something for each of the steps, and with neighbours that are nobody's junk.
    void makeDevice() {
        fixture = std::make_unique<EngineFixture>();
        for (const char* path :
             {"/var/mobile/Library/Logs/a/b", "/var/mobile/Library/Logs/CrashReporter/own", "/var/log/x",
              "/var/logs/y/z", "/var/tmp/t/u", "/var/mobile/Library/Caches/c/d",
              "/var/mobile/Library/Caches/e", "/d/one.log", "/d/deep/er/two.tmp", "/d/kept",
              "/var/mobile/Media/DCIM/100APPLE/IMG_0001.JPG", "/custom/a", "/custom/b/c",
              "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist.kept"}) {
            fixture->device.addFile(path, path);
        }
        fixture->device.addLink("/var/log/link", "/d");
        fixture->device.addLink("/custom/b/link", "/var/mobile/Media");
        fixture->core->choices().setFileTypesExcludingIllegal({"log", "tmp"});
        fixture->core->choices().setCustomFilesExcludingInvalid(platform::Array{
            platform::Dictionary{{"filePath", "/custom"}, {"fileType", "NSFileTypeDirectory"}}});
        before = treeOf(fixture->device);
        std::ignore = fixture->device.device();
    }
    /// What has to hold after any run.
    void judgeRun() {
        EXPECT_FALSE(fixture->core->isRunning());
        EXPECT_LE(fixture->core->fileCount(), 4 * before.size());
        EXPECT_LT(fixture->core->freedSpace(), uint64_t{1} << 40U);
        EXPECT_LE(fixture->loggedPaths().size(), fixture->core->fileCount());
        after = treeOf(fixture->device);
        EXPECT_THAT(missingFrom(tests::withoutBackupNames(before), tests::withoutBackupNames(after)),
                    IsEmpty())
            << "something new came to be";
    }
    /// The counters of a run that nothing disturbs.
    void judgeCounters() {
        if (!counted) {
            counted = fixture->core->fileCount();
            tree = after;
        }
        EXPECT_EQ(fixture->core->fileCount(), *counted);
        EXPECT_EQ(after, tree);
    }

    std::unique_ptr<EngineFixture> fixture;
    tests::Tree before;
    tests::Tree after;
    tests::Tree tree;
    std::optional<uint64_t> counted;
};

} // namespace

TEST_F(EngineFaults, AnalysisChangesNothing) {
    everyFault("analysis", {.prepare = [&] { makeDevice(); },
                            .run = [&] { fixture->clean(steps, OZCoreMode::analyze); },
                            .judge =
                                [&] {
                                    judgeRun();
                                    EXPECT_EQ(after, before);
                                },
                            .release = [&] { fixture.reset(); },
                            .judgeWithoutFault = [&] { judgeCounters(); }});
    EXPECT_GT(counted, 5);
}

TEST_F(EngineFaults, CleanupRemovesNothingButWhatItWouldHaveRemoved) {
    makeDevice();
    fixture->clean(steps);
    const auto rightful = missingFrom(treeOf(fixture->device), before);
    const std::set<std::string> named(rightful.begin(), rightful.end());
    EXPECT_FALSE(named.contains("/d/kept"));
    EXPECT_TRUE(named.contains("/var/log/x"));
    everyFault("cleanup", {.prepare = [&] { makeDevice(); },
                           .run = [&] { fixture->clean(steps); },
                           .judge =
                               [&] {
                                   judgeRun();
                                   for (const auto& path : missingFrom(after, before)) {
                                       EXPECT_TRUE(named.contains(path)) << path;
                                   }
                               },
                           .release = [&] { fixture.reset(); },
                           .judgeWithoutFault = [&] { judgeCounters(); }});
}

TEST_F(EngineFaults, TestModeAndRestoreLoseNothing) {
    const auto judge = [&] {
        judgeRun();
        EXPECT_THAT(missingFrom(tests::withoutBackupNames(after), tests::withoutBackupNames(before)),
                    IsEmpty());
    };
    everyFault("test mode", {.prepare = [&] { makeDevice(); },
                             .run = [&] { fixture->clean(steps, OZCoreMode::test); },
                             .judge = judge,
                             .release = [&] { fixture.reset(); },
                             .judgeWithoutFault = [&] { judgeCounters(); }});
    counted.reset();
    const auto prepare = [&] {
        makeDevice();
        fixture->clean(steps, OZCoreMode::test);
        fixture->core->cleanupLogger()->deleteLogFile();
    };
    everyFault("restore", {.prepare = prepare,
                           .run = [&] { fixture->core->backup(BackupAction::restore); },
                           .judge = judge,
                           .release = [&] { fixture.reset(); },
                           .judgeWithoutFault = [&] { judgeCounters(); }});
}

TEST_F(EngineFaults, WhatIsCountedAfterTheFactIsGone) {
    const CleanupRun::Paths paths = {"/var/log/x",    "/custom",  "/d/deep",
                                     "/var/log/link", "/missing", "/custom/a"};
    const auto judge = [&] {
        judgeRun();
        for (const auto& path : fixture->loggedPaths()) {
            EXPECT_FALSE(fixture->exists(path)) << path << " was reported as gone";
        }
        EXPECT_FALSE(after.empty());
    };
    const auto prepare = [&] {
        makeDevice();
        fixture->enter(OZCoreMode::clean);
    };
    everyFault("quickDel", {.prepare = prepare,
                            .run = [&] { fixture->run().quickDel(paths); },
                            .judge = judge,
                            .release = [&] { fixture.reset(); },
                            .judgeWithoutFault = nullptr});
    everyFault("quickDelLang", {.prepare = prepare,
                                .run = [&] { fixture->run().quickDelLang(paths); },
                                .judge = judge,
                                .release = [&] { fixture.reset(); },
                                .judgeWithoutFault = nullptr});
}

TEST_F(EngineFaults, FolderThatCannotBeReadIsNotEmpty) {
    const Trial trial{.prepare =
                          [&] {
                              makeDevice();
                              fixture->device.addFile("/empty/full/sub/file", "file");
                              std::filesystem::create_directories(
                                  fixture->device.hostPath("/empty/none/at/all"));
                              before = treeOf(fixture->device);
                              fixture->enter(OZCoreMode::clean);
                          },
                      .run = [&] { fixture->run().delEmptyDirs("/empty"); },
                      .judge =
                          [&] {
                              judgeRun();
                              EXPECT_TRUE(fixture->exists("/empty/full/sub/file"));
                          },
                      .release = [&] { fixture.reset(); },
                      .judgeWithoutFault = nullptr};
    everyFault("delEmptyDirs", trial);
}

TEST_F(EngineFaults, LogFolderIsNotTakenForAFileWhenNobodyCanTell) {
    const std::string neighbour = "/var/mobile/Library/Ozvarine/Backups/kept";
    everyFault("log", {.prepare =
                           [&] {
                               makeDevice();
                               fixture->device.addFile(neighbour, "kept");
                           },
                       .run =
                           [&] {
                               fixture->core->cleanupLogger()->openLogFileForWriting();
                               fixture->core->cleanupLogger()->log("text");
                               fixture->core->cleanupLogger()->closeLogFile();
                           },
                       .judge = [&] { EXPECT_TRUE(fixture->exists(neighbour)); },
                       .release = [&] { fixture.reset(); },
                       .judgeWithoutFault = [&] { EXPECT_EQ(fixture->log(), "text"); }});
}

TEST_F(EngineFaults, SearchThatBreaksOffNamesNoHalfPath) {
    makeDevice();
    // As a search is left by whoever kills it: the tool writes its output in blocks, not in paths.
    fixture->device.addTool("/usr/bin/find", R"(printf '/var/log/x\0/var/mobile'; kill -9 $$)");
    fixture->enter(OZCoreMode::clean);
    const auto found = fixture->run().find({"/", "-name", "*"});
    EXPECT_THAT(found.names, testing::ElementsAre("var/log/x"));
}

TEST_F(EngineFaults, AllocationsThatFailLoseNothing) {
    const auto judge = [&] {
        after = treeOf(fixture->device);
        EXPECT_THAT(missingFrom(tests::withoutBackupNames(after), tests::withoutBackupNames(before)),
                    IsEmpty());
    };
    tests::everyAllocation("test mode of walks", {.prepare =
                                                      [&] {
                                                          makeDevice();
                                                          fixture->enter(OZCoreMode::test);
                                                      },
                                                  .run =
                                                      [&] {
                                                          fixture->run().delFilesInFolderRecursive("/custom");
                                                          fixture->run().delEmptyDirs("/var");
                                                          fixture->run().delr(CleanupRun::Paths{"/d/deep"});
                                                      },
                                                  .judge = judge,
                                                  .release = [&] { fixture.reset(); },
                                                  .judgeWithoutFault = nullptr});
}
