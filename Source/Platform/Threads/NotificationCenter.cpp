#include "Platform/Threads/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace platform {

NotificationCenter::Token NotificationCenter::addObserver(std::string_view name, const void* object,
                                                          Observer observer) {
    const std::lock_guard lock(_mutex);
    _entries.push_back({++_lastToken, std::string(name), object, std::move(observer)});
    return _lastToken;
}

void NotificationCenter::removeObserver(Token token) {
    const std::lock_guard lock(_mutex);
    std::erase_if(_entries, [token](const Entry& entry) { return entry.token == token; });
}

void NotificationCenter::post(std::string_view name, const void* object) {
    const Notification notification{name, object};
    // Each observer is looked up when its turn comes, without the lock while it runs: an earlier one may have
    // removed it.
    for (const Token token : tokensFor(notification)) {
        if (const Observer observer = observerWith(token)) {
            observer(notification);
        }
    }
}

std::vector<NotificationCenter::Token> NotificationCenter::tokensFor(const Notification& notification) const {
    const std::lock_guard lock(_mutex);
    std::vector<Token> tokens;
    for (const Entry& entry : _entries) {
        const bool matchesObject = entry.object == nullptr || entry.object == notification.object;
        if (matchesObject && entry.name == notification.name) {
            tokens.push_back(entry.token);
        }
    }
    return tokens;
}

NotificationCenter::Observer NotificationCenter::observerWith(Token token) const {
    const std::lock_guard lock(_mutex);
    const auto found = std::ranges::find(_entries, token, &Entry::token);
    return found == _entries.end() ? Observer() : found->observer;
}

Observation::Observation(NotificationCenter& center, std::string_view name, const void* object,
                         NotificationCenter::Observer observer)
    : _center(&center)
    , _token(center.addObserver(name, object, std::move(observer))) {}

Observation::Observation(Observation&& other) noexcept
    : _center(std::exchange(other._center, nullptr))
    , _token(std::exchange(other._token, 0)) {}

Observation& Observation::operator=(Observation&& other) noexcept {
    std::swap(_center, other._center);
    std::swap(_token, other._token);
    return *this;
}

Observation::~Observation() {
    if (_center != nullptr) {
        _center->removeObserver(_token);
    }
}

} // namespace platform
