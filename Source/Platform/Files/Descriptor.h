#pragma once

#include <utility>

#include <unistd.h>

namespace platform {

/// Sole owner of a file descriptor; closes it at the end of its life. -1 stands for none.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : _number(number) {}
    Descriptor(Descriptor&& other) noexcept
        : _number(std::exchange(other._number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            reset(std::exchange(other._number, -1));
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    [[nodiscard]] int get() const { return _number; }
    explicit operator bool() const { return _number >= 0; }
    /// Gives the number away; the caller closes it.
    int release() { return std::exchange(_number, -1); }
    void reset(int number = -1) {
        if (_number >= 0) {
            ::close(_number);
        }
        _number = number;
    }

  private:
    int _number = -1;
};

} // namespace platform
