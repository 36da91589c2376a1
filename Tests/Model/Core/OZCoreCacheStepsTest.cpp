#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using tests::EngineFixture;

namespace {

const std::string caches = "/var/mobile/Library/Caches/";

const std::vector<std::string> junk = {caches + "BarVM",
                                       caches + "static.ads.example.org/1",
                                       caches + "com.apple.springboard-imagecache-icons",
                                       caches + "https_a/1",
                                       caches + "a.admob.b/1",
                                       caches + "Snapshots/s/1",
                                       "/var/mobile/Library/googleanalytics.db",
                                       "/var/mobile/Library/Keyboard/Cache/1",
                                       "/var/mobile/.bash_history",
                                       "/var/mobile/Documents/.googleanalytics",
                                       "/var/root/Library/Caches/locationd/consolidated.db",
                                       "/var/root/Library/Caches/com.apple.UIStatusBar/1",
                                       "/var/root/Library/Caches/http_b",
                                       "/var/root/.lesshst"};

const std::vector<std::string> kept = {caches + "BarVM2",
                                       caches + "com.apple.springboard-imagecache/1",
                                       caches + "kept_https_a",
                                       "/var/mobile/Documents/googleanalytics",
                                       "/var/mobile/Library/googleanalytics/1",
                                       "/var/root/Library/Caches/kept"};

} // namespace

TEST(CacheStep, TakesCachesAndNothingBeside) {
    for (const auto mode : tests::allModes) {
        EngineFixture fixture;
        fixture.addFiles(kept);
        const auto keptTree = fixture.tree();
        fixture.addFiles(junk);
        const auto before = fixture.tree();
        fixture.run(cleanupstep::cacheFiles, mode);
        if (mode == OZCoreMode::analyze) {
            EXPECT_EQ(fixture.tree(), before);
            continue;
        }
        for (const auto& path : junk) {
            EXPECT_FALSE(fixture.exists(path)) << path;
        }
        for (const auto& path : keptTree) {
            EXPECT_TRUE(fixture.exists(path)) << path;
        }
    }
}

TEST(CacheStep, ADirectoryOfRootsIsMetTwiceByAnAnalysis) {
    EngineFixture fixture;
    fixture.addFiles(
        {"/var/root/Library/Caches/locationd/consolidated.db", "/var/root/Library/Caches/http_b"});
    fixture.run(cleanupstep::cacheFiles, OZCoreMode::analyze);
    EXPECT_THAT(fixture.loggedItems(),
                ElementsAre("/var/mobile/Library:", "/var/mobile:", "/var/root/Library/Caches:",
                            "./locationd/consolidated.db", "./http_b", "/var/root:",
                            "./Library/Caches/locationd/consolidated.db", "./Library/Caches/http_b"));
    EXPECT_EQ(fixture.core->fileCount(), 4);
    fixture.run(cleanupstep::cacheFiles, OZCoreMode::clean);
    EXPECT_EQ(fixture.core->fileCount(), 2);
}

TEST(CacheStep, TheSearchIndexStaysOnNewerGenerations) {
    for (const double version : {1299.9, 1300.0}) {
        EngineFixture fixture(version);
        fixture.addFiles({"/var/mobile/Library/Spotlight/a/index"});
        fixture.run(cleanupstep::cacheFiles);
        EXPECT_EQ(fixture.exists("/var/mobile/Library/Spotlight/a/index"), version == 1300.0) << version;
    }
}
