#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"
#include "Tests/Support/Mounts.h"
#include "Tests/Support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::MatchesRegex;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using tests::EngineFixture;

namespace {

void addTemporaryFiles(TemporaryDevice& device) {
    for (const char* path :
         {"/var/tmp/logs/deep/x", "/var/tmp/log.txt", "/var/tmp/zz", "/var/tmp/sshstate",
          "/var/tmp/a/com.blued.y", "/var/spool/mdt/q/w", "/var/mobile/Media/ApplicationArchives/z",
          "/var/tmp/a/sock", "/var/mobile/Library/Assets/com_apple_MobileAsset_SoftwareUpdatX/a",
          "/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdatX/a"}) {
        device.addFile(path, "12345");
    }
}

} // namespace

TEST(Cleanup, TemporaryFilesGoAndWhatIsInUseStays) {
    EngineFixture engine;
    addTemporaryFiles(engine.device);
    engine.clean({cleanupstep::tempFiles, cleanupstep::otaUpdates});
    for (const char* path : {"/var/tmp/logs", "/var/tmp/log.txt", "/var/tmp/zz", "/var/spool/mdt/q",
                             "/var/mobile/Media/ApplicationArchives/z",
                             "/var/mobile/Library/Assets/com_apple_MobileAsset_SoftwareUpdatX"}) {
        EXPECT_FALSE(engine.exists(path)) << path;
    }
    for (const char* path :
         {"/var/tmp/sshstate", "/var/tmp/a/com.blued.y", "/var/tmp/a/sock", "/var/spool/mdt",
          "/var/MobileAsset/Assets/com_apple_MobileAsset_SoftwareUpdatX/a"}) {
        EXPECT_TRUE(engine.exists(path)) << path;
    }
    EXPECT_EQ(engine.core->cleanupStepCount(), 2);
    EXPECT_FALSE(engine.core->isRunning());
}

TEST(Cleanup, TestModeRenamesAndAnalysisChangesNothing) {
    EngineFixture engine;
    addTemporaryFiles(engine.device);
    engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
    EXPECT_TRUE(engine.exists("/var/tmp/zz"));
    // The files below "logs" are met by the first row as part of it and by the second row on their own.
    EXPECT_EQ(engine.core->fileCount(), 10);
    engine.clean({cleanupstep::tempFiles}, OZCoreMode::test);
    // Here the second row meets them under the first row's backup names: one is moved within the moved
    // folder, one is a backup itself and only counted.
    EXPECT_EQ(engine.core->fileCount(), 10);
    EXPECT_TRUE(engine.exists("/var/tmp/zz.OzvarineBackup"));
    EXPECT_TRUE(engine.exists("/var/tmp/logs.OzvarineBackup/deep/x.OzvarineBackup"));
    EXPECT_THAT(engine.log(),
                StartsWith("###################\n# PROCESSED FILES #\n###################\n\nDate: "));
}

TEST(Cleanup, SummaryStandsAtLineFourWhateverFollows) {
    const std::string summary = "\nDate: [0-9]{2}-[0-9]{2}-[0-9]{4} [0-9]{2}:[0-9]{2}\n\nNumber of files: ";
    EngineFixture engine;
    engine.clean({});
    EXPECT_THAT(engine.log(),
                MatchesRegex("#+\n# DELETED FILES #\n#+\n" + summary + "0\nTotal size: 0.00 B\n"));
    EXPECT_EQ(engine.core->freedSpaceString(), "0.00 B");
    EXPECT_EQ(engine.core->freedSpace(), 0);

    engine.device.addFile("/var/tmp/zz", "12345");
    engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
    EXPECT_THAT(engine.log(),
                MatchesRegex("#+\n# PROCESSED FILES #\n#+\n" + summary +
                             "1\nApproximate size: 5.00 B\n\nTemporary Files\n#+\n\n/var/tmp/zz\n\n"));
}

TEST(FreedSpace, IsWhatTheFileSystemGained) {
    constexpr uint64_t kibi = 1024;
    const struct {
        const char* name;
        uint64_t junk;
        // What another program does meanwhile.
        const char* meanwhile;
        uint64_t atLeast;
        uint64_t atMost;
    } cases[] = {
        {"a file goes", 400 * kibi, "true", 350 * kibi, 400 * kibi},
        {"others free more, and nothing is counted", 0, "rm \"$OZVARINE_DEVICE/ballast\"", 0, 0},
        {"others take more", 4 * kibi, "head -c 400K /dev/zero > \"$OZVARINE_DEVICE/more\"", 0, 0},
    };
    for (const auto& [name, junk, meanwhile, atLeast, atMost] : cases) {
        SCOPED_TRACE(name);
        const tests::TemporaryFolder memory;
        const auto freed = tests::inMountNamespace([&, junk = junk, meanwhile = meanwhile] {
            tests::mountMemory(memory.path(), 4 * kibi * kibi);
            ::setenv("TMPDIR", memory.path().c_str(), 1);
            EngineFixture engine;
            std::ofstream(engine.device.folder() / "ballast") << std::string(400 * kibi, 'b');
            engine.device.addTool("/usr/bin/killall", meanwhile);
            if (junk > 0) {
                engine.device.addFile("/var/tmp/junk", std::string(junk, 'j'));
            }
            engine.clean({cleanupstep::cydia, cleanupstep::tempFiles});
            return std::to_string(engine.core->freedSpace());
        });
        if (!freed) {
            GTEST_SKIP() << "needs a namespace to mount in";
        }
        EXPECT_GE(std::stoull(*freed), atLeast);
        EXPECT_LE(std::stoull(*freed), atMost);
    }
}

TEST(FreedSpace, IsSummedAnewByEachRun) {
    EngineFixture engine;
    engine.device.addFile("/var/tmp/zz", "12345");
    for (int run = 0; run < 2; ++run) {
        engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
        EXPECT_EQ(engine.core->freedSpace(), 5U);
    }
    engine.core->resetState();
    EXPECT_EQ(engine.core->freedSpace(), 0U);
}

TEST(FreedSpace, OfSparseFilesEndsNoRun) {
    constexpr uint64_t tebi = uint64_t{1} << 40U;
    for (const auto& [size, text] :
         {std::pair(tebi - 1, "1,024.00 GiB"), {tebi, "1,024.00 GiB"}, {2 * tebi, "2,048.00 GiB"}}) {
        EngineFixture engine;
        engine.device.addFile("/var/tmp/zz");
        std::error_code error;
        std::filesystem::resize_file(engine.device.hostPath("/var/tmp/zz"), size, error);
        if (error) {
            GTEST_SKIP() << "needs a file system with sparse files of 2 TiB";
        }
        for (const auto mode : {OZCoreMode::analyze, OZCoreMode::test}) {
            engine.clean({cleanupstep::tempFiles}, mode);
            EXPECT_EQ(engine.core->freedSpaceString(), text);
            EXPECT_THAT(engine.log(), testing::HasSubstr(std::string("Approximate size: ") + text));
        }
    }
}

TEST(Cleanup, LogTakesThePlaceOfWhateverStandsInItsWay) {
    EngineFixture engine;
    engine.device.addFile("/var/mobile/Library/Ozvarine", "a file where the folder belongs");
    engine.clean({});
    EXPECT_THAT(engine.log(), StartsWith("#################\n# DELETED FILES"));
    engine.core->cleanupLogger()->log("later");
    EXPECT_THAT(engine.log(), testing::EndsWith("later"));
    // Another name of the log's file keeps its content.
    std::filesystem::create_hard_link(engine.device.hostPath(OZCleanupLogger::logFilePath),
                                      engine.device.hostPath("/other"));
    const std::string before = engine.device.contents("/other");
    engine.clean({});
    EXPECT_EQ(engine.device.contents("/other"), before);
}

TEST(Cleanup, LogIsARecordAtOnceUnlessNothingIsTouched) {
    EngineFixture engine;
    OZCleanupLogger logger(engine.device.device());
    logger.openLogFileForWriting();
    logger.logWithSpacer("/a");
    EXPECT_EQ(engine.log(), "/a\n\n");
    logger.deleteLogFile();
    logger.openLogFileForWriting(platform::FileWriting::gathered);
    logger.logWithSpacer("/a");
    logger.log("b");
    EXPECT_EQ(engine.log(), "");
    logger.closeLogFile();
    EXPECT_EQ(engine.log(), "/a\n\nb");
}

TEST(Cleanup, ManyFoldersGoAndAreLoggedInTheOrderOfTheirListing) {
    EngineFixture engine;
    const std::string folder = "/var/mobile/Media/ApplicationArchives/";
    for (int number = 0; number < 100; ++number) {
        engine.device.addFile(folder + std::to_string(number) + "/sub/file", "12345");
    }
    engine.clean({cleanupstep::tempFiles}, OZCoreMode::analyze);
    const auto analyzed = engine.loggedPaths();
    EXPECT_EQ(analyzed.size(), 300U);
    engine.clean({cleanupstep::tempFiles});
    EXPECT_EQ(engine.loggedPaths(), analyzed);
    EXPECT_TRUE(std::filesystem::is_empty(engine.device.hostPath(folder)));
}

TEST(Cleanup, StepsThatAreOnAreEnteredInTheirOrder) {
    EngineFixture engine;
    platform::Dictionary settings = CleanupChoices::defaultCleanupSettings(engine.device.device());
    settings["ATTACHMENTS"] = uint64_t{2};
    settings.erase("CYDIA");
    engine.core->clean(&settings, Analyze::yes);
    EXPECT_EQ(engine.core->cleanupStepCount(), 9);
    size_t last = 0;
    for (const auto& step : cleanupSteps) {
        const size_t at = engine.log().find(step.logHeading);
        const bool isOn =
            settings.contains(std::string(step.key)) && settings[std::string(step.key)].boolValue().value();
        EXPECT_EQ(at != std::string::npos, isOn) << step.key;
        EXPECT_TRUE(!isOn || at >= last) << step.key;
        last = isOn ? at : last;
    }
}

TEST(CleanupSettings, AreRepairedFromDefaults) {
    EngineFixture engine;
    engine.core->choices().setCleanupSettingsResettingInvalid(
        {{"ATTACHMENTS", 2}, {"SAFARI", "text"}, {"TEMPFILES", false}, {"NOSTEP", true}});
    const auto& settings = engine.core->choices().cleanupSettings();
    EXPECT_EQ(settings.size(), 13);
    EXPECT_EQ(settings.at("ATTACHMENTS").unsignedValue(), 2);
    EXPECT_EQ(settings.at("SAFARI").boolValue(), true);
    EXPECT_EQ(settings.at("TEMPFILES").boolValue(), false);
    EXPECT_EQ(engine.core->choices().enabledCleanupStepKeys().front(), "ATTACHMENTS");
    EXPECT_EQ(EngineFixture(1047.2).core->choices().cleanupSettings().count("BATTERYDATA"), 0);
}
