#include "Desktop/Adapters/QtMainQueue.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <chrono>

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::post(Block block) {
    QMetaObject::invokeMethod(&_receiver, std::move(block), Qt::QueuedConnection);
}

platform::MainQueue::Token QtMainQueue::postAfter(double seconds, Block block) {
    Token token = 0;
    {
        const std::lock_guard lock(_mutex);
        token = ++_lastToken;
        _delayed[token] = std::move(block);
    }
    if (QThread::currentThread() == _receiver.thread()) {
        start(token, seconds);
    } else {
        post([this, token, seconds] { start(token, seconds); });
    }
    return token;
}

void QtMainQueue::start(Token token, double seconds) {
    auto timer = std::make_unique<QTimer>();
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, &_receiver, [this, token] { runDelayed(token); });
    timer->start(std::chrono::milliseconds(static_cast<int64_t>(seconds * 1000)));
    const std::lock_guard lock(_mutex);
    if (_delayed.contains(token)) {
        _timers[token] = std::move(timer);
    }
}

void QtMainQueue::runDelayed(Token token) {
    Block block;
    {
        const std::lock_guard lock(_mutex);
        const auto found = _delayed.find(token);
        if (found == _delayed.end()) {
            return;
        }
        block = std::move(found->second);
        _delayed.erase(found);
        // The timer that has called this goes when it is done.
        if (const auto timer = _timers.find(token); timer != _timers.end()) {
            timer->second.release()->deleteLater();
            _timers.erase(timer);
        }
    }
    block();
}

void QtMainQueue::cancel(Token token) {
    const std::lock_guard lock(_mutex);
    _delayed.erase(token);
    if (const auto timer = _timers.find(token); timer != _timers.end()) {
        timer->second.release()->deleteLater();
        _timers.erase(timer);
    }
}

size_t QtMainQueue::runPending() {
    QCoreApplication::processEvents();
    return 0;
}

void QtMainQueue::run() {
    QCoreApplication::exec();
}

void QtMainQueue::stop() {
    post([] { QCoreApplication::quit(); });
}

bool QtMainQueue::runUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
    const QDeadlineTimer deadline(static_cast<qint64>(timeoutSeconds * 1000));
    while (!predicate() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents,
                                        static_cast<int>(deadline.remainingTime()));
    }
    return predicate();
}
