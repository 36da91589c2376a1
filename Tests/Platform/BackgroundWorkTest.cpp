#include "Platform/Threads/BackgroundWork.h"

#include "Platform/Threads/Queue.h"

#include <atomic>
#include <stdexcept>

#include <gtest/gtest.h>

using platform::BackgroundWork;
using platform::Queue;

TEST(BackgroundWorkTest, FinishesAllThatWasAddedAndCanGoOnAfterwards) {
    std::atomic<int> done = 0;
    Queue queue = Queue::concurrent("work", 3);
    BackgroundWork work(queue);
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
    Queue queue = Queue::concurrent("work", 3);
    BackgroundWork work(queue);
    const auto addAllAndFinish = [&] {
        for (int piece = 0; piece < 100; ++piece) {
            work.add([&, piece] { piece == 0 ? throw std::runtime_error("a piece") : ++done; });
        }
        work.finish();
    };
    // The first piece may be done by a thread or by the owner.
    EXPECT_THROW(addAllAndFinish(), std::runtime_error);
    work.finish();
    EXPECT_TRUE(done == 99 || done == 0);
}

TEST(BackgroundWorkTest, EndsOnlyWhenAllIsDone) {
    std::atomic<int> done = 0;
    Queue queue = Queue::concurrent("work", 3);
    {
        BackgroundWork work(queue);
        for (int piece = 0; piece < 4; ++piece) {
            work.add([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                ++done;
            });
        }
    }
    EXPECT_EQ(done, 4);
}
