#pragma once

#include <map>
#include <string>
#include <string_view>

#include <unicode/uniset.h>

/// Key-value text, such as the listings of command line tools, as a dictionary.
using StringDictionary = std::map<std::string, std::string, std::less<>>;

/// One entry a line; white space and newlines are trimmed from keys and values. An entry that does not split
/// into exactly two parts at the key separator is dropped; of equal keys the last one counts. Empty without a
/// string or a key separator.
[[nodiscard]] StringDictionary dictionaryWithString(std::string_view string, std::string_view keySeparator);

/// The same with a separator of entries, where an empty one stands for any newline character, and with the
/// characters that are trimmed from keys and values.
[[nodiscard]] StringDictionary dictionaryWithString(std::string_view string, std::string_view keySeparator,
                                                    std::string_view entrySeparator,
                                                    const icu::UnicodeSet& charactersToTrim);
