#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

/// Hears from the kernel when programs have to wait for memory. Where it does not tell, nothing is heard.
class MemoryPressure {
  public:
    /// Called on the main thread, at most once in two seconds.
    explicit MemoryPressure(std::function<void()> warn);
    ~MemoryPressure();
    MemoryPressure(const MemoryPressure&) = delete;
    MemoryPressure& operator=(const MemoryPressure&) = delete;

  private:
    int _file;
    std::unique_ptr<QSocketNotifier> _notifier;
};
