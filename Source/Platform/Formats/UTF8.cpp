#include "Platform/Formats/UTF8.h"

#include <algorithm>

#include <unicode/utf8.h>

namespace platform {

bool isUTF8(std::string_view bytes) {
    // Most text is plain, which takes a fraction of the time to see.
    if (std::ranges::all_of(bytes, [](char byte) { return static_cast<signed char>(byte) >= 0; })) {
        return true;
    }
    const auto* text = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto length = static_cast<int64_t>(bytes.size());
    for (int64_t position = 0; position < length;) {
        UChar32 character = 0;
        U8_NEXT(text, position, length, character);
        if (character < 0) {
            return false;
        }
    }
    return true;
}

} // namespace platform
