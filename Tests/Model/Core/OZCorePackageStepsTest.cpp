#include "Model/Core/CleanupSteps.h"
#include "Tests/Model/Core/StepFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using tests::StepFixture;

namespace {

// Each argument in brackets, so that none can hide in another.
constexpr std::string_view note = R"({ printf %s "$(basename "$0")";
printf '[%s]' "$@";
echo;
} )"
                                  R"(>> "$OZVARINE_DEVICE/Journal.log")"
                                  "\n";

void addAptGet(StepFixture& fixture) {
    fixture.device.addTool("/usr/bin/apt-get",
                           std::string(note) + "echo \"plan $1 $2\"; echo 'a warning' >&2");
}

void addDpkg(StepFixture& fixture) {
    fixture.device.addTool("/usr/bin/dpkg", std::string(note) +
                                                R"([ "$1" = -l ] || { echo loud; echo loud >&2; exit 1; }
printf '||/ Name  Version\nii  kept  1\nrc  first:arm\t1  text\nrc\nrc   second 2\n rc third 3\n')");
}

} // namespace

TEST(DependenciesStep, ShowsThePlanAndTouchesNothingShortOfACleanup) {
    for (const auto mode : {OZCoreMode::analyze, OZCoreMode::test}) {
        StepFixture fixture;
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
    StepFixture fixture;
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

TEST(DependenciesStep, MissingToolsAreNoError) {
    StepFixture fixture;
    addDpkg(fixture);
    // A stand-in of one package tool takes the place of all: the host's own are not reached.
    fixture.run(cleanupstep::dependencies);
    const auto journal = fixture.device.journal();
    ASSERT_FALSE(journal.empty());
    EXPECT_EQ(journal.front(), "dpkg[-l]");
    EXPECT_EQ(fixture.core->cleanupStepCount(), 1);
}
