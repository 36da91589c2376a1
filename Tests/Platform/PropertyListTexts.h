#pragma once

#include "Tests/Support/Usual.h"

#include <unicode/unistr.h>

namespace tests {

inline std::string xml(const std::string& content) {
    return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">" + content + "</plist>\n";
}

/// UTF-8 text in another encoding, by ICU's name.
inline std::string encoded(const std::string& text, const char* encoding) {
    const auto units = icu::UnicodeString::fromUTF8(text);
    std::string bytes(text.size() * 4, '\0');
    bytes.resize(static_cast<size_t>(
        units.extract(0, units.length(), bytes.data(), static_cast<uint32_t>(bytes.size()), encoding)));
    return bytes;
}

inline std::string repeated(std::string_view part, size_t times) {
    std::string text;
    for (; times > 0; --times) {
        text += part;
    }
    return text;
}

} // namespace tests
