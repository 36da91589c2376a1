#pragma once

#include <cstdint>
#include <string_view>

#include <unicode/uniset.h>
#include <unicode/utf8.h>

/// Cuts the first line off a text, and the newline character that ends it, if there is one; the rest stays.
inline std::string_view takeLine(std::string_view& text, const icu::UnicodeSet& newlines) {
    const auto size = static_cast<int32_t>(text.size());
    int32_t next = newlines.spanUTF8(text.data(), size, USET_SPAN_NOT_CONTAINED);
    const std::string_view line = text.substr(0, static_cast<size_t>(next));
    if (next < size) {
        U8_FWD_1(text.data(), next, size);
    }
    text.remove_prefix(static_cast<size_t>(next));
    return line;
}
