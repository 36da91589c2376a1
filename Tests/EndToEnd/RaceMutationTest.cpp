#include "Tests/Support/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using testing::HasSubstr;

TEST(RaceMutation, ARunOnPlainPathsIsLedAway) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root for an adversary of another user";
    }
    const auto outcome = tests::runProgram("race_tests_plain", {});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("canaries after run"));
}
