#include "Model/Core/CleanupSteps.h"
#include "Platform/Device/DeviceNames.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using tests::EngineFixture;

TEST(CydiaStep, CleansItsCachesAndPartialFiles) {
    for (const auto mode : tests::allModes) {
        EngineFixture fixture;
        const std::string cydia = "/var/mobile/Library/Caches/com.saurik.Cydia/";
        fixture.addFiles({"/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia/1", cydia + "LocalStorage/1",
                          cydia + "fsCachedData/1", cydia + "ApplicationCache.db", cydia + "Cache.db",
                          cydia + "Cache.db-shm", cydia + "lists/kept", cydia + "lists/partial/p",
                          cydia + "archives/partial/q/r", "/var/lib/apt/lists/partial/s"});
        const auto before = fixture.tree();
        fixture.run(cleanupstep::cydia, mode);
        EXPECT_THAT(fixture.device.journal(), ElementsAre("killall -9 MobileCydia Cydia"));
        if (mode == OZCoreMode::analyze) {
            EXPECT_EQ(fixture.tree(), before);
        } else if (mode == OZCoreMode::clean) {
            EXPECT_THAT(fixture.tree(),
                        UnorderedElementsAre("/var/mobile/Library/Caches/Snapshots/", cydia + "lists/kept",
                                             cydia + "lists/partial/", cydia + "archives/partial/",
                                             "/var/lib/apt/lists/partial/"));
        }
        const auto logged = fixture.loggedItems();
        ASSERT_GE(logged.size(), 9);
        EXPECT_THAT(std::vector(logged.begin(), logged.begin() + 8),
                    ElementsAre("/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia",
                                "/var/mobile/Library/Caches/Snapshots/com.saurik.Cydia/1",
                                "/var/mobile/Library/Caches/com.saurik.Cydia:", "./LocalStorage",
                                "./LocalStorage/1", "fsCachedData", "fsCachedData/1", "ApplicationCache.db"));
        EXPECT_EQ(logged.back(), cydia + "archives/partial/q/r");
    }
}

TEST(CydiaStep, CleansCachesOfSystemApplicationsByIdentifier) {
    EngineFixture fixture(1445.32, {{"org.one", "One", "System"},
                                    {"org.excluded", "Excluded", "System"},
                                    {"..", "Parent", "System"},
                                    {"../Preferences", "Elsewhere", "System"},
                                    {"com.saurik.Cydia", "Cydia", "System"},
                                    {std::string(devicename::programIdentifier), "Ozvarine", "System"},
                                    {"com.apple.one", "Apple", "System"},
                                    {"org.user", "User"},
                                    {"org.hidden", "Hidden", "System", "", {}, {}, false}});
    fixture.apps->setExclusionMask(OZExclusionMask::cleanup, "org.excluded");
    std::set<std::string> expected;
    for (const std::string folder :
         {"/var/mobile/Library/Caches/", "/var/root/Library/Caches/", "/var/mobile/Library/Caches/Snapshots/",
          "/var/root/Library/Caches/Snapshots/"}) {
        for (const auto* identifier :
             {"org.one", "org.excluded", "com.apple.one", "org.user", "org.hidden"}) {
            fixture.addFiles({folder + identifier + "/1"});
        }
    }
    fixture.addFiles({"/var/mobile/Library/Preferences/1", "/var/root/Library/Preferences/1"});
    for (const auto& path : fixture.tree()) {
        if (!path.contains("org.one")) {
            expected.insert(path);
        }
    }
    fixture.run(cleanupstep::cydia);
    EXPECT_EQ(fixture.tree(), expected);
    EXPECT_NE(fixture.body().find("\nOne\n---\n\n/var/mobile/Library/Caches/org.one\n\n"), std::string::npos);
    EXPECT_EQ(fixture.body().find("\nCydia\n"), std::string::npos);
    EXPECT_THAT(fixture.device.journal(), testing::Contains("killall -9 One"));
}

TEST(CydiaStep, RemovesSnapshotsOfApplicationsThatAreGone) {
    EngineFixture fixture(1445.32, {{"org.user", "User"}, {"com.apple.one", "Apple", "System"}});
    const std::string snapshots = "/var/mobile/Library/Auxo/Snapshots/";
    fixture.addFiles({snapshots + "org.user/1", snapshots + "com.apple.one", snapshots + "org.gone/1",
                      snapshots + "com.apple.webapp", snapshots + "com.apple.webapp-A",
                      snapshots + "com.apple.webapp-B", "/var/mobile/Library/WebClips/A.webclip/Info.plist"});
    fixture.run(cleanupstep::cydia);
    EXPECT_THAT(fixture.tree(),
                UnorderedElementsAre(snapshots + "org.user/1", snapshots + "com.apple.one",
                                     snapshots + "com.apple.webapp", snapshots + "com.apple.webapp-A",
                                     "/var/mobile/Library/WebClips/A.webclip/Info.plist"));
    EXPECT_NE(
        fixture.body().find("\nAuxo snapshots\n--------------\n\n\n##\nIn dir: /var/mobile/Library/Auxo/"
                            "Snapshots\n##\n\n"),
        std::string::npos);
    EXPECT_NE(fixture.body().find("\n\norg.gone\n\norg.gone/1\n\n"), std::string::npos) << fixture.body();
}

TEST(CydiaStep, SnapshotsStayWhereNobodyCanTellWhichWebClipsThereAre) {
    EngineFixture fixture;
    fixture.addFiles({"/var/mobile/Library/Auxo/Snapshots/com.apple.webapp-A",
                      "/var/mobile/Library/Auxo/Snapshots/org.gone/1"});
    const auto snapshots = fixture.tree();
    // A link to itself can be read by nobody.
    fixture.device.addLink("/var/mobile/Library/WebClips", "WebClips");
    fixture.run(cleanupstep::cydia);
    EXPECT_THAT(fixture.tree(), testing::IsSupersetOf(snapshots));

    std::filesystem::remove(fixture.device.hostPath("/var/mobile/Library/WebClips"));
    fixture.run(cleanupstep::cydia);
    EXPECT_THAT(fixture.tree(), ElementsAre("/var/mobile/Library/Auxo/Snapshots/"));
}

TEST(CydiaSourcesStep, TakesListsAndLeavesFolders) {
    EngineFixture fixture;
    fixture.addFiles({"/var/lib/apt/lists/a", "/var/lib/apt/lists/partial/b",
                      "/var/mobile/Library/Caches/com.saurik.Cydia/lists/c"});
    fixture.run(cleanupstep::cydiaSources);
    EXPECT_THAT(fixture.tree(), UnorderedElementsAre("/var/lib/apt/lists/partial/b",
                                                     "/var/mobile/Library/Caches/com.saurik.Cydia/lists/"));
    EXPECT_EQ(fixture.core->fileCount(), 2);
}
