#include "Platform/Threads/BackgroundWork.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace platform {

namespace {

// The work is bound by the file system, which a few threads keep busy. The owner is one more.
constexpr size_t mostThreads = 3;
// Enough that no thread runs dry, few enough that the owner soon takes its share.
constexpr size_t waitingPerThread = 2;

} // namespace

BackgroundWork::~BackgroundWork() {
    {
        std::unique_lock lock(_mutex);
        waitForAll(lock);
        _ended = true;
    }
    _added.notify_all();
    for (auto& thread : _threads) {
        thread.join();
    }
}

void BackgroundWork::add(std::function<void()> piece) {
    if (_threads.empty()) {
        startThreads();
    }
    {
        const std::lock_guard lock(_mutex);
        if (_waiting.size() < _threads.size() * waitingPerThread) {
            _waiting.push_back(std::move(piece));
            _added.notify_one();
            return;
        }
    }
    piece();
}

void BackgroundWork::finish() {
    std::unique_lock lock(_mutex);
    waitForAll(lock);
    if (const auto thrown = std::exchange(_thrown, nullptr)) {
        std::rethrow_exception(thrown);
    }
}

void BackgroundWork::waitForAll(std::unique_lock<std::mutex>& lock) {
    while (doOnePiece(lock)) {
    }
    _done.wait(lock, [this] { return _underWay == 0; });
}

void BackgroundWork::startThreads() {
    const size_t processors = std::thread::hardware_concurrency();
    for (size_t count = 1; count < std::min(processors, mostThreads + 1); ++count) {
        try {
            _threads.emplace_back([this] { workToTheEnd(); });
        } catch (const std::system_error&) {
            // Fewer threads are only slower.
            return;
        }
    }
}

void BackgroundWork::workToTheEnd() {
    std::unique_lock lock(_mutex);
    while (!_ended) {
        if (!doOnePiece(lock)) {
            _added.wait(lock);
        }
    }
}

// Works without the lock; false where nothing waits.
bool BackgroundWork::doOnePiece(std::unique_lock<std::mutex>& lock) {
    if (_waiting.empty()) {
        return false;
    }
    const auto piece = std::move(_waiting.front());
    _waiting.pop_front();
    ++_underWay;
    lock.unlock();
    std::exception_ptr thrown;
    try {
        piece();
    } catch (...) {
        thrown = std::current_exception();
    }
    lock.lock();
    if (!_thrown) {
        _thrown = std::move(thrown);
    }
    if (--_underWay == 0) {
        _done.notify_all();
    }
    return true;
}

} // namespace platform
