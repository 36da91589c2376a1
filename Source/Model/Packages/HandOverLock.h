#pragma once

#include <condition_variable>
#include <mutex>

/// A lock that another thread may release than the one that took it, as a mutex may not be.
class HandOverLock {
  public:
    HandOverLock() = default;
    HandOverLock(const HandOverLock&) = delete;
    HandOverLock& operator=(const HandOverLock&) = delete;

    void lock() {
        std::unique_lock guard(_mutex);
        _released.wait(guard, [this] { return !_isLocked; });
        _isLocked = true;
    }
    void unlock() {
        const std::lock_guard guard(_mutex);
        _isLocked = false;
        _released.notify_one();
    }

  private:
    std::mutex _mutex;
    std::condition_variable _released;
    bool _isLocked = false;
};
