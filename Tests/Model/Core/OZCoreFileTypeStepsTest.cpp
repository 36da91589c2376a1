#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using testing::ElementsAre;
using tests::EngineFixture;

namespace {

platform::Dictionary settings(bool withApplications) {
    platform::Dictionary settings{{std::string(cleanupstep::fileTypeCleanup), true}};
    if (withApplications) {
        settings[std::string(cleanupstep::applications)] = true;
    }
    return settings;
}

/// The arguments that the search is made with; the stand-in finds nothing.
std::vector<std::string> searchArguments(EngineFixture& fixture, bool withApplications, OZCoreMode mode) {
    fixture.device.addTool("/usr/bin/find", R"(printf '%s\n' "$@" > "$OZVARINE_DEVICE/Journal.log")");
    fixture.run(settings(withApplications), mode);
    return fixture.device.journal();
}

std::vector<std::string> withPrune(const std::string& pattern) {
    return {"/",  "-regextype", "posix-extended",   "-regex", pattern, "-prune",
            "-o", "-regex",     "^.*\\.(log|tmp)$", "-type",  "f",     "-print0"};
}

} // namespace

TEST(FileTypeStep, TheSearchPassesByWhatIsToBeSpared) {
    constexpr const char* containers =
        "^(/private)?(/var/containers/Bundle/Application|/var/mobile/Containers/Data/"
        "Application|/var/mobile/Containers/Shared/AppGroup)$";
    constexpr const char* counted = "^(/private)?/var/([Ll]ogs?|tmp)$|^.*/Library/Logs$";
    EngineFixture fixture(1445.32, {{"org.user", "User", "User", "/c/ABC"}});
    fixture.core->choices().setFileTypesExcludingIllegal({"log", "tmp"});
    EXPECT_EQ(searchArguments(fixture, false, OZCoreMode::clean), withPrune(containers));
    EXPECT_EQ(searchArguments(fixture, false, OZCoreMode::test), withPrune(containers));
    EXPECT_EQ(searchArguments(fixture, false, OZCoreMode::analyze),
              withPrune(std::string(containers) + "|" + counted));
    EXPECT_THAT(searchArguments(fixture, true, OZCoreMode::clean),
                ElementsAre("/", "-regextype", "posix-extended", "-regex", "^.*\\.(log|tmp)$", "-type", "f",
                            "-print0"));
    fixture.apps->setExclusionMask(OZExclusionMask::cleanup, "org.user");
    const std::string excluded = "^.*/(org.user.app|ABC|ABC)$";
    EXPECT_EQ(searchArguments(fixture, true, OZCoreMode::clean), withPrune(excluded));
    EXPECT_EQ(searchArguments(fixture, true, OZCoreMode::analyze), withPrune(excluded + "|" + counted));

    EngineFixture older(1140.10);
    older.core->choices().setFileTypesExcludingIllegal({"log", "tmp"});
    EXPECT_EQ(searchArguments(older, false, OZCoreMode::clean),
              withPrune("^(/private)?(/var/mobile/Applications|/var/mobile/Applications)$"));
}

TEST(FileTypeStep, TakesFilesByTheirExtension) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "the search needs root, or a user namespace that maps it";
    }
    for (const auto mode : tests::allModes) {
        EngineFixture fixture;
        fixture.addFiles({"/a.log", "/x/b.tmp", "/x/c.LOG", "/x/log", "/x/d.log.txt", "/var/log/e.log",
                          "/var/mobile/Containers/Data/Application/A/f.log"});
        std::filesystem::create_directory(fixture.device.hostPath("/x/folder.log"));
        fixture.device.addLink("/x/link.log", "/x/log");
        const auto before = fixture.tree();
        fixture.run(cleanupstep::fileTypeCleanup, mode);
        auto expected = before;
        std::vector<std::string> logged = {"/a.log", "/x/b.tmp"};
        if (mode != OZCoreMode::analyze) {
            logged.emplace_back("/var/log/e.log");
            for (const auto& path : logged) {
                expected.erase(path);
                if (mode == OZCoreMode::test) {
                    expected.insert(path + ".OzvarineBackup");
                }
            }
            if (mode == OZCoreMode::clean) {
                expected.insert("/var/log/");
            }
        }
        EXPECT_EQ(fixture.tree(), expected);
        EXPECT_THAT(fixture.loggedItems(), testing::UnorderedElementsAreArray(logged));
    }
}

TEST(FileTypeStep, WithoutTypesTheStepSaysSo) {
    EngineFixture fixture;
    fixture.core->choices().setFileTypesExcludingIllegal({"png"});
    fixture.run(cleanupstep::fileTypeCleanup);
    EXPECT_EQ(fixture.body(), "\nNo filetypes specified. Skipping step...\n");
    EXPECT_EQ(fixture.core->cleanupStepCount(), 1);
}
