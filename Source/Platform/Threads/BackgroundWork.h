#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace platform {

class Queue;

/// Pieces of work that a queue's threads do while their owner goes on, in any order and side by side. One
/// thread owns it. The owner takes its share when it waits, so that all is done even where the queue has no
/// thread to spare.
class BackgroundWork {
  public:
    /// The queue outlives it.
    explicit BackgroundWork(Queue& queue);
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;
    /// Waits until all is done; what pieces threw is lost.
    ~BackgroundWork();

    /// Leaves a piece to the threads. Where they are behind, does it at once and throws what it throws.
    void add(std::function<void()> piece);
    /// Returns when all that was added is done. Throws what a piece threw on a thread, the first of several.
    void finish();

  private:
    class Pieces;

    Queue& _queue;
    // Of the queue's blocks, too: one may begin when all is done and the owner gone.
    std::shared_ptr<Pieces> _pieces;
};

} // namespace platform
