#pragma once

#include "Model/Services/OZStdIO.h"

#include <string>
#include <string_view>

#include <fmt/format.h>

/// What the menus have in common on the screen.
namespace menutext {

inline std::string colored(std::string_view color, std::string_view text) {
    return fmt::format("{}{}{}", color, text, OZStdIO::reset);
}
inline std::string red(std::string_view text) {
    return colored(OZStdIO::red, text);
}
inline std::string green(std::string_view text) {
    return colored(OZStdIO::green, text);
}
inline std::string yellow(std::string_view text) {
    return colored(OZStdIO::yellow, text);
}

/// A menu's number as it stands before its name: "1)".
inline std::string number(size_t number) {
    return yellow(fmt::format("{})", number));
}

/// The last lines of a menu.
inline std::string backAndPrompt(std::string_view menu) {
    return fmt::format("\n{} Back to {}\n\nChoice = ", number(0), menu);
}

inline constexpr std::string_view question = "What do you want to do?";

} // namespace menutext
