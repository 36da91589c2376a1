#include "Platform/Threads/Queue.h"

#define ASIO_STANDALONE
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <pthread.h>

namespace platform {

namespace {

using WorkGuard = asio::executor_work_guard<asio::io_context::executor_type>;

std::chrono::steady_clock::duration durationOf(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

} // namespace

/// The threads of a queue and what they run.
class Queue::Workers {
  public:
    Workers(std::string name, size_t count)
        : _name(std::move(name))
        , _count(count)
        , _context(int(count)) {}
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers() {
        _context.stop();
        for (std::thread& thread : _threads) {
            thread.join();
        }
    }

    [[nodiscard]] size_t count() const { return _count; }

    void async(Block block) {
        std::call_once(_started, [this] { start(); });
        asio::post(_context, std::move(block));
    }

  private:
    void start() {
        for (size_t index = 0; index < _count; ++index) {
            _threads.emplace_back([this] {
                // The kernel keeps 15 bytes of a thread's name.
                pthread_setname_np(pthread_self(), _name.substr(0, 15).c_str());
                _context.run();
            });
        }
    }

    std::string _name;
    size_t _count;
    asio::io_context _context;
    WorkGuard _guard = asio::make_work_guard(_context);
    std::once_flag _started;
    std::vector<std::thread> _threads;
};

Queue Queue::concurrent(std::string name, size_t threads) {
    return {std::move(name), threads};
}

Queue Queue::serial(std::string name) {
    return {std::move(name), 1};
}

Queue::Queue(std::string name, size_t threads)
    : _workers(std::make_unique<Workers>(std::move(name), threads)) {}
Queue::Queue(Queue&&) noexcept = default;
Queue& Queue::operator=(Queue&&) noexcept = default;
Queue::~Queue() = default;

size_t Queue::threads() const {
    return _workers->count();
}

void Queue::async(Block block) {
    _workers->async(std::move(block));
}

/// Delayed blocks wait in one map by token; what makes them due, a timer or the manual clock, only knows the
/// token, so that a cancelled block is simply no longer found.
class MainQueue::Loop {
  public:
    void post(Block block) {
        asio::post(_context, [this, run = std::move(block)] {
            ++_blockCount;
            run();
        });
    }

    Token postAfter(double seconds, Block block) {
        const std::lock_guard lock(_mutex);
        const Token token = ++_lastToken;
        Delayed& delayed = _delayed[token];
        delayed.block = std::move(block);
        if (_manual) {
            _dueTimes.emplace(_manualTime + seconds, token);
        } else {
            delayed.timer = std::make_unique<asio::steady_timer>(_context, durationOf(seconds));
            delayed.timer->async_wait([this, token](const std::error_code&) { fire(token); });
        }
        return token;
    }

    void cancel(Token token) {
        const std::lock_guard lock(_mutex);
        _delayed.erase(token);
    }

    void setManualClock(bool manual) {
        const std::lock_guard lock(_mutex);
        _manual = manual;
    }

    void advance(double seconds) {
        const std::lock_guard lock(_mutex);
        _manualTime += seconds;
        while (!_dueTimes.empty() && _dueTimes.begin()->first <= _manualTime) {
            asio::post(_context, [this, token = _dueTimes.begin()->second] { fire(token); });
            _dueTimes.erase(_dueTimes.begin());
        }
    }

    size_t runPending() {
        const size_t before = _blockCount;
        _context.poll();
        return _blockCount - before;
    }

    void run() {
        while (!_stopRequested.exchange(false)) {
            _context.run_one();
        }
    }

    void stop() {
        _stopRequested = true;
        asio::post(_context, [] {});
    }

    bool runUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
        const auto deadline = std::chrono::steady_clock::now() + durationOf(timeoutSeconds);
        while (!predicate()) {
            if (_context.run_one_until(deadline) == 0) {
                return predicate();
            }
        }
        return true;
    }

  private:
    struct Delayed {
        Block block;
        std::unique_ptr<asio::steady_timer> timer;
    };

    void fire(Token token) {
        std::unique_lock lock(_mutex);
        const auto delayed = _delayed.extract(token);
        lock.unlock();
        if (delayed) {
            ++_blockCount;
            delayed.mapped().block();
        }
    }

    asio::io_context _context;
    WorkGuard _guard = asio::make_work_guard(_context);
    std::atomic<bool> _stopRequested = false;
    /// Of the running thread alone.
    size_t _blockCount = 0;

    std::mutex _mutex;
    Token _lastToken = 0;
    std::map<Token, Delayed> _delayed;
    bool _manual = false;
    double _manualTime = 0;
    std::set<std::pair<double, Token>> _dueTimes;
};

MainQueue::MainQueue()
    : _loop(std::make_unique<Loop>()) {}
MainQueue::~MainQueue() = default;

void MainQueue::post(Block block) {
    _loop->post(std::move(block));
}

MainQueue::Token MainQueue::postAfter(double seconds, Block block) {
    return _loop->postAfter(seconds, std::move(block));
}

void MainQueue::cancel(Token token) {
    _loop->cancel(token);
}

size_t MainQueue::runPending() {
    return _loop->runPending();
}

void MainQueue::run() {
    _loop->run();
}

void MainQueue::stop() {
    _loop->stop();
}

bool MainQueue::runUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
    return _loop->runUntil(predicate, timeoutSeconds);
}

void MainQueue::setManualClock(bool manual) {
    _loop->setManualClock(manual);
}

void MainQueue::advance(double seconds) {
    _loop->advance(seconds);
}

} // namespace platform
