#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// An encoding of Unicode that a byte order mark at a text's beginning tells.
struct MarkedEncoding {
    std::string_view mark;
    /// As the converters know it.
    const char* name;
    /// Bytes; no text of the encoding ends within one.
    size_t unitSize;
};

inline constexpr MarkedEncoding utf8Marked{.mark = "\xEF\xBB\xBF", .name = "UTF-8", .unitSize = 1};
inline constexpr MarkedEncoding utf16LittleEndian{.mark = "\xFF\xFE", .name = "UTF-16LE", .unitSize = 2};
inline constexpr MarkedEncoding utf16BigEndian{.mark = "\xFE\xFF", .name = "UTF-16BE", .unitSize = 2};
inline constexpr MarkedEncoding utf32LittleEndian{
    .mark = {"\xFF\xFE\0\0", 4}, .name = "UTF-32LE", .unitSize = 4};
inline constexpr MarkedEncoding utf32BigEndian{
    .mark = {"\0\0\xFE\xFF", 4}, .name = "UTF-32BE", .unitSize = 4};

/// The encoding whose mark the bytes begin with, one of the above; null without a mark.
[[nodiscard]] constexpr const MarkedEncoding* encodingMarkedIn(std::string_view bytes) {
    // The longer marks come first: one of 32 bits begins like one of 16.
    for (const auto* encoding :
         {&utf32LittleEndian, &utf32BigEndian, &utf8Marked, &utf16LittleEndian, &utf16BigEndian}) {
        if (bytes.starts_with(encoding->mark)) {
            return encoding;
        }
    }
    return nullptr;
}

/// The bytes without the mark of UTF-8 before them, where there is one.
[[nodiscard]] constexpr std::string_view withoutUTF8Mark(std::string_view bytes) {
    return bytes.substr(bytes.starts_with(utf8Marked.mark) ? utf8Marked.mark.size() : 0);
}

} // namespace platform
