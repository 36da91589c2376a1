#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"
#include "Tests/Support/StandardOutput.h"

#include <cstdlib>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;
using tests::EngineFixture;
using tests::ListedApp;

namespace {

const platform::Dictionary applicationsStep{{std::string(cleanupstep::applications), true}};

} // namespace

TEST(SafariStep, CleansSharedFoldersCacheAndContainerInOrder) {
    EngineFixture fixture(1445.32, {{"com.apple.mobilesafari", "Safari", "System", "/c/safari"}});
    fixture.addFiles({"/var/mobile/Library/Safari/History.plist", "/var/mobile/Library/Safari/Bookmarks.db",
                      "/var/mobile/Library/WebKit/Databases/d/1",
                      "/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db",
                      "/var/mobile/Library/Caches/com.apple.mobilesafari/Cache.db-wal",
                      "/var/mobile/Library/Caches/com.apple.mobilesafari/Thumbnails/t/1",
                      "/var/mobile/Library/Caches/com.apple.mobilesafari/kept", "/c/safari/tmp/t/1",
                      "/c/safari/Library/Safari/Thumbnails/1", "/c/safari/Library/Safari/Thumbnails/kept/1",
                      "/c/safari/Library/Safari/History.db", "/c/safari/Library/Safari/History/kept"});
    const auto before = fixture.tree();
    fixture.run(cleanupstep::safari, OZCoreMode::analyze);
    const std::vector<std::string> logged = {"/var/mobile/Library/Safari/History.plist",
                                             "/var/mobile/Library/WebKit/Databases/d",
                                             "/var/mobile/Library/WebKit/Databases/d/1",
                                             "/var/mobile/Library/Caches/com.apple.mobilesafari:",
                                             "./Cache.db",
                                             "./Thumbnails/t",
                                             "./Thumbnails/t/1",
                                             "./Cache.db-wal",
                                             "/c/safari:",
                                             "./tmp/t",
                                             "./tmp/t/1",
                                             "./Library/Safari/Thumbnails/1",
                                             "./Library/Safari/History.db"};
    EXPECT_EQ(fixture.loggedItems(), logged);
    EXPECT_EQ(fixture.tree(), before);
    EXPECT_EQ(fixture.core->fileCount(), 11);
    EXPECT_THAT(fixture.device.journal(), IsEmpty());
    fixture.run(cleanupstep::safari, OZCoreMode::clean);
    EXPECT_EQ(fixture.loggedItems(), logged);
    EXPECT_THAT(fixture.tree(),
                testing::UnorderedElementsAre(
                    "/var/mobile/Library/Safari/Bookmarks.db", "/var/mobile/Library/WebKit/Databases/",
                    "/var/mobile/Library/Caches/com.apple.mobilesafari/Thumbnails/",
                    "/var/mobile/Library/Caches/com.apple.mobilesafari/kept", "/c/safari/tmp/",
                    "/c/safari/Library/Safari/Thumbnails/kept/1", "/c/safari/Library/Safari/History/kept"));
    EXPECT_THAT(fixture.device.journal(), ElementsAre("killall -9 MobileSafari"));
}

TEST(ApplicationsStep, CleansEveryContainerOfTheUsersApplications) {
    EngineFixture fixture(
        1445.32,
        {{"z.last", "Zebra", "User", "/c/zebra", {{"group.z", "/g/zebra"}}, {{"plugin.z", "/p/zebra"}}},
         {"a.first", "Älpha\U0001F600", "User", "/c/missing"},
         {"com.apple.Maps", "Maps", "System", "/c/maps"},
         {"com.apple.clock", "Clock", "System", "/c/clock"},
         {"x.excluded", "Excluded", "User", "/c/excluded"}});
    fixture.apps->setExclusionMask(OZExclusionMask::cleanup, "x.excluded");
    for (const std::string container :
         {"/c/zebra", "/g/zebra", "/p/zebra", "/c/maps", "/c/clock", "/c/excluded"}) {
        fixture.addFiles(
            {container + "/Library/Caches/f/1", container + "/tmp/1", container + "/Library/WebKit/kept",
             container + "/Documents/.flurry1", container + "/Documents/googleanalytics.db",
             container + "/Documents/.googleanalytics", container + "/Library/.initialTimestamp"});
    }
    auto expected = fixture.tree();
    fixture.run(cleanupstep::applications);
    for (const std::string container : {"/c/zebra", "/g/zebra", "/p/zebra", "/c/maps"}) {
        for (const char* gone : {"/Library/Caches/f/1", "/tmp/1", "/Documents/.flurry1",
                                 "/Documents/googleanalytics.db", "/Library/.initialTimestamp"}) {
            expected.erase(container + gone);
        }
        expected.insert({container + "/Library/Caches/", container + "/tmp/"});
    }
    EXPECT_EQ(fixture.tree(), expected);
    const std::string body = fixture.body();
    EXPECT_TRUE(body.starts_with("\nMaps\n----\n\n##\nIn dir: /c/maps\n##\n\n./Library/Caches/f\n\n"))
        << body;
    EXPECT_NE(body.find("\nÄlpha\U0001F600\n-------\n"), std::string::npos) << body;
    const std::vector<std::string> order = {"In dir: /c/zebra", "In dir: /g/zebra", "In dir: /p/zebra"};
    for (size_t place = 1; place < order.size(); ++place) {
        EXPECT_LT(body.find(order[place - 1]), body.find(order[place]));
    }
}

TEST(ApplicationsStep, QuitsApplicationsWhereNobodyWatches) {
    for (const auto mode : tests::allModes) {
        EngineFixture fixture(1445.32, {{"a.b", "Abc"}});
        fixture.run(cleanupstep::applications, mode);
        EXPECT_EQ(fixture.device.journal().size(), mode == OZCoreMode::analyze ? 0 : 1);
    }
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(::grantpt(terminal), 0);
    ASSERT_EQ(::unlockpt(terminal), 0);
    EngineFixture fixture(1445.32, {{"a.b", "Abc"}});
    {
        const tests::StandardOutput output(::ptsname(terminal));
        fixture.run(applicationsStep, OZCoreMode::clean);
    }
    EXPECT_THAT(fixture.device.journal(), IsEmpty());
    ::close(terminal);
}

TEST(BatteryStep, TakesOldArchivesAtOneDepthOfTheSystemContainers) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "the search needs root, or a user namespace that maps it";
    }
    const std::string containers = "/var/containers/Shared/SystemGroup";
    const std::string archives = "/A/Library/BatteryLife/Archives";
    const std::vector<std::string> files = {
        containers + archives + "/old", containers + archives + "/new", containers + archives + "/deep/old",
        containers + "/A/B/Library/BatteryLife/Archives/old", containers + "/A/Library/Other/Archives/old"};
    for (const double version : {1242.11, 1242.12}) {
        EngineFixture fixture(version);
        fixture.addFiles(files);
        fixture.addFiles({"/var/mobile/Library/BatteryLife/Archives/a/1"});
        for (const auto& file : files) {
            if (file.ends_with("old")) {
                std::filesystem::last_write_time(fixture.device.hostPath(file),
                                                 std::filesystem::file_time_type::clock::now() -
                                                     std::chrono::hours(24 * 9));
            }
        }
        auto expected = fixture.tree();
        expected.erase("/var/mobile/Library/BatteryLife/Archives/a/1");
        expected.insert("/var/mobile/Library/BatteryLife/Archives/");
        if (version == 1242.12) {
            expected.erase(files[0]);
        }
        fixture.run(cleanupstep::batteryData);
        EXPECT_EQ(fixture.tree(), expected) << version;
    }
}
