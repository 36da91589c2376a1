#include "Platform/Threads/BackgroundWork.h"

#include <atomic>
#include <stdexcept>

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

TEST(BackgroundWorkTest, ThrowsWhatAPieceThrewAndDoesTheOthers) {
    std::atomic<int> done = 0;
    BackgroundWork work;
    const auto addAllAndFinish = [&] {
        for (int piece = 0; piece < 100; ++piece) {
            work.add([&, piece] { piece == 0 ? throw std::runtime_error("a piece") : ++done; });
        }
        work.finish();
    };
    // The first piece may be done by a thread or, where there is none, at once.
    EXPECT_THROW(addAllAndFinish(), std::runtime_error);
    work.finish();
    EXPECT_TRUE(done == 99 || done == 0);
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
