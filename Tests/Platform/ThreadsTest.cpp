// Queues, work that threads share, and notifications.

#include "Platform/Threads/BackgroundWork.h"
#include "Platform/Threads/NotificationCenter.h"
#include "Platform/Threads/Queue.h"
#include "Tests/Support/Usual.h"

#include <future>
#include <latch>

using namespace platform;
using namespace std::chrono_literals;

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
    EXPECT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(Queue, ConcurrentQueueRunsBlocksSideBySide) {
    // Each waits for the other, so one after the other they would never end.
    std::latch all(3);
    Queue queue = Queue::concurrent("a name that is longer than the kernel keeps", 2);
    queue.async([&] { all.arrive_and_wait(); });
    queue.async([&] { all.arrive_and_wait(); });
    all.arrive_and_wait();
}

TEST(Queue, EndOfQueueWaitsForRunningWorkAndDropsTheRest) {
    std::atomic<bool> finished = false;
    std::atomic<bool> droppedRan = false;
    std::latch started(1);
    {
        Queue queue = Queue::serial("ending");
        queue.async([&] {
            started.count_down();
            std::this_thread::sleep_for(50ms);
            finished = true;
        });
        queue.async([&] { droppedRan = true; });
        started.wait();
    }
    EXPECT_TRUE(finished && !droppedRan);
}

TEST(MainQueue, RunsPostsOfAllThreadsOnTheThreadThatRunsIt) {
    MainQueue queue;
    std::thread::id thread;
    std::thread other([&] {
        queue.post([&] { thread = std::this_thread::get_id(); });
        queue.post([&] { queue.stop(); });
    });
    queue.run();
    other.join();
    EXPECT_EQ(thread, std::this_thread::get_id());
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
    const auto after = [&](double seconds, char name) {
        return queue.postAfter(seconds, [&order, name] { order += name; });
    };
    std::ignore = after(2.0, 'c');
    std::ignore = after(1.0, 'a');
    std::ignore = after(1.0, 'b');
    queue.cancel(after(1.5, 'x'));
    const auto due = after(2.0, 'y');
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
    std::string ran;
    queue.cancel(queue.postAfter(0.001, [&] { ran += "cancelled"; }));
    std::ignore = queue.postAfter(0.01, [&] { ran += "late"; });
    EXPECT_TRUE(queue.runUntil([&] { return !ran.empty(); }, 30));
    EXPECT_EQ(ran, "late");
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0.01));
}

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
    for (std::optional<BackgroundWork> work(queue); done == 0; work.reset()) {
        for (int piece = 0; piece < 4; ++piece) {
            work->add([&] {
                std::this_thread::sleep_for(20ms);
                ++done;
            });
        }
    }
    EXPECT_EQ(done, 4);
}

TEST(NotificationCenter, DeliversByNameAndObjectInOrderOfAdditionToWhomIsThere) {
    NotificationCenter center;
    std::string order;
    const auto observe = [&](const char* name, const void* object, char mark) {
        return center.addObserver(name, object, [&order, mark](const Notification&) { order += mark; });
    };
    int one = 0;
    int two = 0;
    std::ignore = observe("end", &one, '1');
    std::ignore = observe("end", nullptr, '*');
    std::ignore = observe("end", &two, '2');
    std::ignore = observe("start", nullptr, 's');
    center.post("end", &one);
    center.post("end", &two);
    center.post("end");
    EXPECT_EQ(order, "1**2*");

    // Observers may remove and add within a delivery.
    order.clear();
    NotificationCenter::Token first = 0;
    NotificationCenter::Token second = 0;
    first = center.addObserver("off", nullptr, [&](const Notification&) {
        order += '1';
        center.removeObserver(first);
        center.removeObserver(second);
        std::ignore = observe("off", nullptr, 'n');
    });
    second = observe("off", nullptr, '2');
    std::ignore = observe("off", nullptr, '3');
    center.post("off");
    EXPECT_EQ(order, "13");
    center.post("off");
    EXPECT_EQ(order, "133n");
}

TEST(NotificationCenter, ObservationEndsWithItsOwner) {
    NotificationCenter center;
    int count = 0;
    {
        Observation outer;
        {
            Observation inner(center, "end", nullptr, [&](const Notification&) { ++count; });
            outer = std::move(inner);
        }
        center.post("end");
    }
    center.post("end");
    EXPECT_EQ(count, 1);
}
