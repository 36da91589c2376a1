#pragma once

#include "Platform/Threads/Queue.h"

#include <functional>
#include <memory>

/// Runs a block on the main queue again and again, first after one interval, until it is stopped or its life
/// ends. The block may stop it.
class RepeatingTimer {
  public:
    /// Seconds. The queue outlives the timer.
    RepeatingTimer(platform::MainQueue& queue, double interval, std::function<void()> block);
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;
    ~RepeatingTimer();

  private:
    struct State;

    static void schedule(const std::shared_ptr<State>& state);

    std::shared_ptr<State> _state;
};
