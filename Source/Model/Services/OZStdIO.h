#pragma once

#include <string_view>

/// The program's standard streams.
class OZStdIO {
  public:
    OZStdIO() = delete;

    static constexpr std::string_view red = "\033[0;31m";
    static constexpr std::string_view green = "\033[0;32m";
    static constexpr std::string_view yellow = "\033[0;33m";
    static constexpr std::string_view reset = "\033[0;0m";

    /// Writes the text to standard output at once.
    static void printf(std::string_view text);
};
