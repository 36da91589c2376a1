#pragma once

#include "Tests/Support/Usual.h"

namespace scenarios {

using Words = std::vector<std::string>;
using Lines = std::vector<std::string>;
using Variables = std::map<std::string, std::string, std::less<>>;

/// A line of a scenario's file and its place there, counted from 0.
struct Line {
    size_t number = 0;
    std::string text;
};

/// What stands between two "== title" lines of a file. The lines before the first title stand before those of
/// each scenario.
struct Scenario {
    std::string title;
    std::vector<Line> lines;
};

[[nodiscard]] Lines linesOf(std::string_view text);
/// Throws std::runtime_error for a file without a scenario.
[[nodiscard]] std::vector<Scenario> scenariosOf(const std::string& file);

/// The words of a line; a word in double quotes may hold blanks and "\n", "\t", "\r", "\\", "\"", "\0" and
/// "\xNN". A dictionary in braces is one word as it stands.
[[nodiscard]] Words wordsOf(std::string_view line);
/// The text with "$NAME" and "${NAME}" replaced; a "$" before no known name stands for itself.
[[nodiscard]] std::string expanded(std::string_view text, const Variables& variables);
/// Takes the first word off a line, with the blanks behind it.
std::string takeWord(std::string_view& line);
/// What "\n" and the like stand for.
[[nodiscard]] std::string unescaped(std::string_view text);
/// The other way round, for what a line cannot show as it stands, such as bytes that are no UTF-8.
[[nodiscard]] std::string escaped(std::string_view text);

/// Whether the lines are those that are expected. In an expected line "…" stands for anything, and an
/// expected line that holds nothing but a mark and "…" stands for any number of lines with this mark.
[[nodiscard]] bool matches(const Lines& expected, const Lines& actual);
/// Both as one text: "  " before what they share, "- " before what was expected alone, "+ " before what came
/// alone.
[[nodiscard]] std::string difference(const Lines& expected, const Lines& actual);

} // namespace scenarios
