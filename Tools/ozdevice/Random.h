#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ozdevice {

/// A stream of numbers that is the same for the same seed on every machine, which the standard distributions
/// do not promise.
class Random {
  public:
    explicit Random(uint64_t seed)
        : _state(seed) {}

    uint64_t next() {
        _state += 0x9e3779b97f4a7c15;
        uint64_t mixed = _state;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        return mixed ^ (mixed >> 31);
    }

    /// A number from 0 to `bound` less one; `bound` is not 0.
    uint64_t below(uint64_t bound) { return next() % bound; }

    /// Such as "0F4C2E61-…", the form of a container's folder name.
    std::string uuid() {
        constexpr std::string_view digits = "0123456789ABCDEF";
        std::string text = "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx";
        for (char& character : text) {
            if (character == 'x') {
                character = digits[below(digits.size())];
            }
        }
        return text;
    }

  private:
    uint64_t _state;
};

} // namespace ozdevice
