#include "Platform/Threads/Queue.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using platform::MainQueue;
using platform::Queue;

TEST(Queue, SerialQueueRunsOneBlockAtATimeInOrder) {
    std::vector<int> order;
    std::promise<void> done;
    Queue queue = Queue::serial("serial");
    for (int number = 0; number < 100; ++number) {
        // No lock on the vector: the queue itself is what keeps the blocks apart.
        queue.async([&order, number] { order.push_back(number); });
    }
    queue.async([&done] { done.set_value(); });
    done.get_future().wait();
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(Queue, ConcurrentQueueRunsBlocksSideBySide) {
    std::promise<void> first;
    std::promise<void> second;
    std::promise<void> done;
    Queue queue = Queue::concurrent("a name that is longer than the kernel keeps", 2);
    // Each waits for the other, so one after the other they would never end.
    queue.async([&] {
        first.set_value();
        second.get_future().wait();
        done.set_value();
    });
    queue.async([&] {
        first.get_future().wait();
        second.set_value();
    });
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST(Queue, EndOfQueueWaitsForRunningWorkAndDropsTheRest) {
    std::atomic<bool> finished = false;
    std::atomic<bool> droppedRan = false;
    std::promise<void> started;
    {
        std::optional<Queue> queue = Queue::serial("ending");
        queue->async([&] {
            started.set_value();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            finished = true;
        });
        queue->async([&droppedRan] { droppedRan = true; });
        started.get_future().wait();
    }
    EXPECT_TRUE(finished);
    EXPECT_FALSE(droppedRan);
}

TEST(MainQueue, RunsPostsOfAllThreadsOnTheThreadThatRunsIt) {
    MainQueue queue;
    std::vector<std::thread::id> threads;
    std::thread other([&] {
        queue.post([&] { threads.push_back(std::this_thread::get_id()); });
        queue.post([&] { queue.stop(); });
    });
    queue.run();
    other.join();
    EXPECT_EQ(threads, std::vector{std::this_thread::get_id()});
    // A stop ends one run alone.
    queue.post([&] { queue.stop(); });
    queue.run();
}

TEST(MainQueue, PendingBlocksIncludeThoseThatTheyPost) {
    MainQueue queue;
    std::string order;
    queue.post([&] {
        order += 'a';
        queue.post([&] { order += 'c'; });
    });
    queue.post([&] { order += 'b'; });
    EXPECT_EQ(queue.runPending(), 3U);
    EXPECT_EQ(order, "abc");
    EXPECT_EQ(queue.runPending(), 0U);
}

TEST(MainQueue, DelayedBlocksRunWhenDueInOrderAndNotWhenCancelled) {
    MainQueue queue;
    queue.setManualClock(true);
    std::string order;
    std::ignore = queue.postAfter(2.0, [&] { order += 'c'; });
    std::ignore = queue.postAfter(1.0, [&] { order += 'a'; });
    std::ignore = queue.postAfter(1.0, [&] { order += 'b'; });
    const auto early = queue.postAfter(1.5, [&] { order += 'x'; });
    const auto due = queue.postAfter(2.0, [&] { order += 'y'; });
    queue.cancel(early);
    queue.advance(0.9);
    EXPECT_EQ(queue.runPending(), 0U);
    queue.advance(0.1);
    EXPECT_EQ(queue.runPending(), 2U);
    queue.advance(60);
    queue.cancel(due); // due already, but not begun
    EXPECT_EQ(queue.runPending(), 1U);
    EXPECT_EQ(order, "abc");
}

TEST(MainQueue, RealClockRunsAndCancelsDelayedBlocks) {
    MainQueue queue;
    bool cancelled = false;
    bool ran = false;
    queue.cancel(queue.postAfter(0.001, [&] { cancelled = true; }));
    std::ignore = queue.postAfter(0.01, [&] { ran = true; });
    EXPECT_TRUE(queue.runUntil([&] { return ran; }, 30));
    EXPECT_FALSE(cancelled);
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0.01));
}
