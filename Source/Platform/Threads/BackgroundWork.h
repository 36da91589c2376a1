#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

/// Pieces of work that are done on a few threads while their owner goes on, in any order and side by side.
/// One thread owns it; the threads start with the first piece and end with the object.
class BackgroundWork {
  public:
    BackgroundWork() = default;
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;
    /// Waits until all is done; what pieces threw is lost.
    ~BackgroundWork();

    /// Leaves a piece to the threads. Where there are none, or where they are behind, does it at once and
    /// throws what it throws.
    void add(std::function<void()> piece);
    /// Returns when all that was added is done. Throws what a piece threw on a thread, the first of several.
    void finish();

  private:
    void startThreads();
    void workToTheEnd();
    bool doOnePiece(std::unique_lock<std::mutex>& lock);
    void waitForAll(std::unique_lock<std::mutex>& lock);

    std::mutex _mutex;
    std::condition_variable _added;
    std::condition_variable _done;
    std::deque<std::function<void()>> _waiting;
    size_t _underWay = 0;
    bool _ended = false;
    std::exception_ptr _thrown;
    std::vector<std::thread> _threads;
};

} // namespace platform
