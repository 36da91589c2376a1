#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What an observer is told: the name that was posted and the object that it is about, if any. The object is
/// only as alive as its poster keeps it.
struct Notification {
    std::string_view name;
    const void* object = nullptr;
};

/// Announcements between objects that do not know each other. Safe to use from several threads; an observer
/// runs on the thread that posts.
class NotificationCenter {
  public:
    using Observer = std::function<void(const Notification&)>;
    /// Names one observer; 0 names none.
    using Token = uint64_t;

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// Calls the observer for every post of the name about the object; null stands for any object.
    [[nodiscard]] Token addObserver(std::string_view name, const void* object, Observer observer);

    /// Ends the observation. Safe within a delivery: an observer that is removed there is not called any
    /// more.
    void removeObserver(Token token);

    /// Whether a post of the name about the object would reach anybody now.
    [[nodiscard]] bool isObserved(std::string_view name, const void* object) const {
        return !tokensFor({name, object}).empty();
    }

    /// Calls the observers in the order of their addition and returns when all have run. Those that are added
    /// meanwhile are not called.
    void post(std::string_view name, const void* object = nullptr);

  private:
    struct Entry {
        Token token;
        std::string name;
        const void* object;
        Observer observer;
    };

    [[nodiscard]] std::vector<Token> tokensFor(const Notification& notification) const;
    [[nodiscard]] Observer observerWith(Token token) const;

    mutable std::mutex _mutex;
    std::vector<Entry> _entries;
    Token _lastToken = 0;
};

/// An observation that ends with its owner. The centre outlives it.
class Observation {
  public:
    Observation() = default;
    Observation(NotificationCenter& center, std::string_view name, const void* object,
                NotificationCenter::Observer observer);
    Observation(Observation&& other) noexcept;
    Observation& operator=(Observation&& other) noexcept;
    ~Observation();

  private:
    NotificationCenter* _center = nullptr;
    NotificationCenter::Token _token = 0;
};

} // namespace platform
