#pragma once

#include <string>
#include <string_view>

/// A text that compares as the given one does without regard to case: equal for equal texts, and less where
/// the text comes first. Made once a text, so that sorting many costs no folding.
[[nodiscard]] std::string caseFoldedString(std::string_view text);

/// Whether the part stands in the text, without regard to case and diacritics. An empty part stands in none.
[[nodiscard]] bool containsIgnoringCaseAndDiacritics(std::string_view text, std::string_view part);
