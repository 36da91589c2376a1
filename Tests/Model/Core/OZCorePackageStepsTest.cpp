#include "Model/Core/CleanupSteps.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using tests::EngineFixture;
using tests::NoLanguages;

namespace {

// Each argument in brackets, so that none can hide in another.
constexpr const char* note =
    R"sh({ printf %s "$(basename "$0")"; printf '[%s]' "$@"; echo; } >> "$OZVARINE_DEVICE/Journal.log"
)sh";

void addAptGet(EngineFixture& fixture) {
    fixture.device.addTool("/usr/bin/apt-get",
                           std::string(note) + "echo \"plan $1 $2\"; echo 'a warning' >&2");
}

void addDpkg(EngineFixture& fixture) {
    fixture.device.addTool("/usr/bin/dpkg",
                           std::string(note) + R"sh([ "$1" = -l ] || { echo loud; echo loud >&2; exit 1; }
printf '||/ Name  Version\nii  kept  1\nrc  first:arm\t1  text\nrc\nrc   second 2\n rc third 3\n')sh");
}

// An application that tells no name may be the excluded one, so nobody knows which applications there are.
std::unique_ptr<OZAppList> inventoryThatCannotBeRead(platform::Device& device) {
    device.standardUserDefaults().setObject("excludedApps", platform::Dictionary{{"org.excluded", 7}});
    auto inventory = std::make_unique<OZAppList>(device);
    inventory->loadDefaults();
    EXPECT_FALSE(inventory->isComplete());
    return inventory;
}

} // namespace

TEST(DependenciesStep, ShowsThePlanAndTouchesNothingShortOfACleanup) {
    for (const auto mode : {OZCoreMode::analyze, OZCoreMode::test}) {
        EngineFixture fixture;
        addAptGet(fixture);
        addDpkg(fixture);
        fixture.run(cleanupstep::dependencies, mode);
        EXPECT_THAT(fixture.device.journal(), ElementsAre("apt-get[-s][autoremove]"));
        EXPECT_EQ(fixture.body(), "plan -s autoremove\na warning\n");
        EXPECT_EQ(fixture.core->fileCount(), 0);
        EXPECT_EQ(fixture.core->freedSpace(), 0);
    }
}

TEST(DependenciesStep, RemovesCleansAndPurges) {
    EngineFixture fixture;
    addAptGet(fixture);
    addDpkg(fixture);
    testing::internal::CaptureStdout();
    fixture.core->setCommandLineOutputEnabled(true);
    fixture.run({{std::string(cleanupstep::dependencies), true}}, OZCoreMode::clean);
    fixture.core->setCommandLineOutputEnabled(false);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(fixture.device.journal(),
                ElementsAre("apt-get[-y][autoremove]", "apt-get[-y][clean]", "dpkg[-l]",
                            "dpkg[-P]['first:arm']", "dpkg[-P]['second']", "dpkg[--clear-avail]",
                            "dpkg[--forget-old-unavail]"));
    EXPECT_EQ(fixture.body(), "plan -y autoremove\na warning\nplan -y clean\na warning\n"
                              "\nPurging uninstalled packages ...\n\n");
    EXPECT_TRUE(printed.ends_with(fixture.body())) << printed;
}

TEST(DependenciesStep, PurgesNothingByAListThatCannotBeReadAsText) {
    EngineFixture fixture;
    fixture.device.addTool("/usr/bin/apt-get", "printf '\\377'");
    fixture.device.addTool("/usr/bin/dpkg", std::string(note) + "printf 'rc  foo 1.0 \\377\\n'");
    fixture.run(cleanupstep::dependencies);
    EXPECT_THAT(fixture.device.journal(),
                ElementsAre("dpkg[-l]", "dpkg[--clear-avail]", "dpkg[--forget-old-unavail]"));
    EXPECT_EQ(fixture.body(), "\nPurging uninstalled packages ...\n\n");
}

TEST(CleanupSteps, AllOfThemEndWithoutToolsAndInventory) {
    EngineFixture fixture;
    fixture.addFiles(
        {"/x.log", "/var/mobile/Library/Auxo/Snapshots/org.user/1", "/Applications/Damaged.app/Info.plist"});
    const auto before = fixture.tree();
    platform::Device bare(fixture.device.device().fileManager(), {.foundationVersion = 1445.32}, {});
    const auto unread = inventoryThatCannotBeRead(bare);
    const NoLanguages languages(bare);
    OZCore core(bare, *unread, languages.manager);
    core.setCleanupLogger(std::make_unique<OZCleanupLogger>(bare));
    platform::Dictionary settings;
    for (const auto& step : cleanupSteps) {
        settings[std::string(step.key)] = true;
    }
    core.clean(&settings, Analyze::no);
    EXPECT_EQ(core.cleanupStepCount(), 13);
    EXPECT_EQ(fixture.tree(), before);
    EXPECT_THAT(fixture.body(), testing::HasSubstr("\nPurging uninstalled packages ...\n\n"));
}
