#pragma once

#include "Platform/Threads/Queue.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>

/// The main queue of a process whose main thread runs Qt's event loop: what is posted wakes the loop.
class QtMainQueue : public platform::MainQueue {
  public:
    QtMainQueue() = default;
    ~QtMainQueue() override;

    void post(Block block) override;
    [[nodiscard]] Token postAfter(double seconds, Block block) override;
    void cancel(Token token) override;
    size_t runPending() override;
    void run() override;
    void stop() override;
    bool runUntil(const std::function<bool()>& predicate, double timeoutSeconds) override;

  private:
    void start(Token token, double seconds);
    void runDelayed(Token token);

    // Lives on the main thread; what is posted goes through its event queue.
    QObject _receiver;
    std::mutex _mutex;
    std::map<Token, Block> _delayed;
    std::map<Token, std::unique_ptr<QTimer>> _timers;
    Token _lastToken = 0;
};
