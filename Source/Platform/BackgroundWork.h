#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

/// Pieces of work that are done on a few threads while their owner goes on, in any order and side by side.
/// They must not throw. One thread owns it; the threads start with the first piece and end with the object.
class BackgroundWork {
  public:
    BackgroundWork() = default;
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;
    /// Waits until all is done.
    ~BackgroundWork();

    /// Leaves a piece to the threads. Where there are none, or where they are behind, does it at once.
    void add(std::function<void()> piece);
    /// Returns when all that was added is done.
    void finish();

  private:
    void startThreads();
    void workToTheEnd();
    bool doOnePiece(std::unique_lock<std::mutex>& lock);

    std::mutex _mutex;
    std::condition_variable _added;
    std::condition_variable _done;
    std::deque<std::function<void()>> _waiting;
    size_t _underWay = 0;
    bool _ended = false;
    std::vector<std::thread> _threads;
};

} // namespace platform
