#include "Platform/Threads/BackgroundWork.h"

#include "Platform/Threads/Queue.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <tuple>
#include <utility>

namespace platform {

namespace {

// Enough that no thread runs dry, few enough that the owner soon takes its share.
constexpr size_t waitingPerThread = 2;

} // namespace

class BackgroundWork::Pieces {
  public:
    /// False, and the piece is still the caller's, where `most` are waiting.
    bool add(std::function<void()>& piece, size_t most) {
        const std::lock_guard lock(_mutex);
        if (_waiting.size() >= most) {
            return false;
        }
        _waiting.push_back(std::move(piece));
        return true;
    }

    /// Nothing where the owner has done it already.
    void doOne() {
        std::unique_lock lock(_mutex);
        doOne(lock);
    }

    /// What a piece threw, if any did.
    std::exception_ptr finish() {
        std::unique_lock lock(_mutex);
        while (doOne(lock)) {
        }
        _done.wait(lock, [this] { return _underWay == 0; });
        return std::exchange(_thrown, nullptr);
    }

  private:
    // Works without the lock; false where nothing waits.
    bool doOne(std::unique_lock<std::mutex>& lock) {
        if (_waiting.empty()) {
            return false;
        }
        auto piece = std::move(_waiting.front());
        _waiting.pop_front();
        ++_underWay;
        lock.unlock();
        std::exception_ptr thrown;
        try {
            piece();
        } catch (...) {
            thrown = std::current_exception();
        }
        // What a piece holds is let go before its end is told.
        piece = nullptr;
        lock.lock();
        if (!_thrown) {
            _thrown = std::move(thrown);
        }
        if (--_underWay == 0) {
            _done.notify_all();
        }
        return true;
    }

    std::mutex _mutex;
    std::condition_variable _done;
    std::deque<std::function<void()>> _waiting;
    size_t _underWay = 0;
    std::exception_ptr _thrown;
};

BackgroundWork::BackgroundWork(Queue& queue)
    : _queue(queue)
    , _pieces(std::make_shared<Pieces>()) {}

BackgroundWork::~BackgroundWork() {
    std::ignore = _pieces->finish();
}

void BackgroundWork::add(std::function<void()> piece) {
    if (_pieces->add(piece, _queue.threads() * waitingPerThread)) {
        try {
            _queue.async([pieces = _pieces] { pieces->doOne(); });
        } catch (const std::system_error&) {
            // Without a thread the piece waits for the owner.
        }
    } else {
        piece();
    }
}

void BackgroundWork::finish() {
    if (const auto thrown = _pieces->finish()) {
        std::rethrow_exception(thrown);
    }
}

} // namespace platform
