#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

/// The program's standard streams. Only lines are read: the terminal keeps its own settings.
class OZStdIO {
  public:
    OZStdIO() = delete;

    static constexpr std::string_view red = "\033[0;31m";
    static constexpr std::string_view green = "\033[0;32m";
    static constexpr std::string_view yellow = "\033[0;33m";
    static constexpr std::string_view reset = "\033[0;0m";

    /// Empties the terminal's screen.
    static void clear();
    static void flushStdOut();
    /// Writes the text to standard output at once.
    static void printf(std::string_view text);
    static void fprintf(std::FILE* stream, std::string_view text);

    /// How many bytes of a line are read at once, as the oldest platforms do: what follows is the next line.
    /// Without it a line may have any length.
    static void setLineCapacity(std::optional<size_t> bytes);

    // Reading waits for as many lines as it takes. At the end of input, for example when the terminal has
    // gone, there is nothing to wait for: the answer is none, then and ever after.
    /// The next line of nothing but ASCII, without the white space at its ends. Other lines are passed over.
    static std::optional<std::string> getLine();
    /// The number of the next line that is one integer and nothing else. A number too big for the type is
    /// the nearest that the type has.
    static std::optional<int64_t> getInteger();
    /// Waits for [Enter].
    static void pause();
};
