#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {

/// Runs blocks of work beside the calling thread. Threads are started by the first block, so a queue that is
/// never used costs nothing. The end of a queue waits for the blocks that are running and drops, without
/// running them, those that have not begun.
class Queue {
  public:
    using Block = std::function<void()>;

    /// Runs up to `threads` blocks at once. The name is for debuggers.
    static Queue concurrent(std::string name, size_t threads);
    /// Runs one block at a time, in the order of their arrival.
    static Queue serial(std::string name);

    Queue(Queue&&) noexcept;
    Queue& operator=(Queue&&) noexcept;
    ~Queue();

    /// How many blocks run at once.
    [[nodiscard]] size_t threads() const;
    /// Hands the block over and returns at once; any thread may call it, also a block of this queue.
    void async(Block block);

  private:
    class Workers;

    Queue(std::string name, size_t threads);

    std::unique_ptr<Workers> _workers;
};

/// The queue of the process's main thread: whatever is posted runs there, in order, when the thread comes
/// round to it. A graphical event loop may stand behind it instead of this one.
class MainQueue {
  public:
    using Block = std::function<void()>;
    /// Names one delayed block; 0 names none.
    using Token = uint64_t;

    MainQueue();
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;
    virtual ~MainQueue();

    /// Any thread may post; the block runs on the thread that runs the queue.
    virtual void post(Block block);
    /// The same after a delay in seconds. Blocks that are due at one moment run in the order of posting.
    [[nodiscard]] virtual Token postAfter(double seconds, Block block);
    /// Drops a delayed block that has not begun; any other token is passed over.
    virtual void cancel(Token token);

    /// Runs what is due now, also what that posts, and returns how many blocks ran. Never blocks.
    virtual size_t runPending();
    /// Runs blocks as they come until `stop`, which any thread may call; a stop before the run ends it at
    /// once.
    virtual void run();
    virtual void stop();
    /// Runs blocks until the predicate holds or the time is over, in seconds of real time (with a manual
    /// clock only what is due runs); returns what the predicate says in the end. It is asked again after
    /// every block.
    virtual bool runUntil(const std::function<bool()>& predicate, double timeoutSeconds);

    /// With a manual clock delayed blocks become due by `advance` alone, so that a test of long delays takes
    /// none. To be chosen before anything is posted with a delay.
    void setManualClock(bool manual);
    /// Moves the manual clock on by so many seconds; runs nothing.
    void advance(double seconds);

  private:
    class Loop;

    std::unique_ptr<Loop> _loop;
};

} // namespace platform
