#include "Platform/BackgroundWork.h"

#include <atomic>

#include <gtest/gtest.h>

using platform::BackgroundWork;

TEST(BackgroundWorkTest, FinishesAllThatWasAddedAndCanGoOnAfterwards) {
    std::atomic<int> done = 0;
    BackgroundWork work;
    work.finish();
    for (int round = 1; round <= 3; ++round) {
        for (int piece = 0; piece < 1000; ++piece) {
            work.add([&] { ++done; });
        }
        work.finish();
        EXPECT_EQ(done, round * 1000);
    }
}

TEST(BackgroundWorkTest, EndsOnlyWhenAllIsDone) {
    std::atomic<int> done = 0;
    {
        BackgroundWork work;
        for (int piece = 0; piece < 4; ++piece) {
            work.add([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                ++done;
            });
        }
    }
    EXPECT_EQ(done, 4);
}
