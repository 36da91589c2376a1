#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/uniset.h>

/// Additions to text. All text is UTF-8; a byte that is none counts as the replacement character.

/// Line feed to carriage return, U+0085, U+2028 and U+2029.
[[nodiscard]] const icu::UnicodeSet& newlineCharacterSet();
/// The blanks of all scripts, the tab, and the newlines.
[[nodiscard]] const icu::UnicodeSet& whitespaceAndNewlineCharacterSet();

/// A moment as "MM-dd-yyyy HH:mm" in a time zone such as "Europe/Berlin". Without a zone, or with one that
/// nobody knows, it is that of the host.
[[nodiscard]] std::string
timestampString(const std::optional<std::string>& timeZone = std::nullopt,
                std::chrono::system_clock::time_point moment = std::chrono::system_clock::now());

/// True if any character of the text is in the set.
[[nodiscard]] bool containsCharactersFromSet(std::string_view text, const icu::UnicodeSet& set);

/// True if something is left after trimming white space and newlines at both ends.
[[nodiscard]] bool isNotEmptyOrWhitespace(std::string_view text);

/// The text without the characters of the set; the order of the others is kept.
[[nodiscard]] std::string stringByDeletingCharactersInSet(std::string_view text, const icu::UnicodeSet& set);

/// The part of the text between the first and the last character that are not in the set.
[[nodiscard]] std::string_view stringByTrimmingCharactersInSet(std::string_view text,
                                                               const icu::UnicodeSet& set);

/// The text as a part of an extended regular expression that means it as it stands; the dot, which stands for
/// itself and more, is left alone.
[[nodiscard]] std::string stringByEscapingForRegex(std::string_view text);
