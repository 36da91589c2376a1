#pragma once

#include "Platform/Formats/PropertyList.h"

#include <optional>

#include <unicode/unistr.h>

namespace platform {

/// Reads a property list in the text format, which came before XML and which people still write: dictionaries
/// in braces, arrays in parentheses, data between angle brackets, and texts in quotes or without, with
/// comments between them. Pairs without braces make a dictionary, too. All values are texts, data, arrays or
/// dictionaries; of several values for one key the last counts. None for anything else, a text alone among
/// it; for a zero within a text, which no list holds; and for what takes more memory than a list may, values
/// and text together.
[[nodiscard]] std::optional<Value> parseTextPropertyList(icu::UnicodeString text);

} // namespace platform
