#include "Interface/RepeatingTimer.h"

#include <utility>

struct RepeatingTimer::State {
    platform::MainQueue& queue;
    double interval;
    std::function<void()> block;
    platform::MainQueue::Token token = 0;
    bool isStopped = false;
};

RepeatingTimer::RepeatingTimer(platform::MainQueue& queue, double interval, std::function<void()> block)
    : _state(std::make_shared<State>(queue, interval, std::move(block))) {
    schedule(_state);
}

RepeatingTimer::~RepeatingTimer() {
    _state->isStopped = true;
    _state->queue.cancel(_state->token);
}

void RepeatingTimer::schedule(const std::shared_ptr<State>& state) {
    // The next one is due before the block runs, which may end the timer, and with it all but this state.
    state->token = state->queue.postAfter(state->interval, [state] {
        if (!state->isStopped) {
            schedule(state);
            state->block();
        }
    });
}
