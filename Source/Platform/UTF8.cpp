#include "Platform/UTF8.h"

#include <algorithm>

#include <unicode/utf8.h>

namespace platform {

bool isUTF8(std::string_view bytes) {
    // Most text is plain, which takes a fraction of the time to see.
    if (std::ranges::all_of(bytes, [](char byte) { return U8_IS_SINGLE(byte); })) {
        return true;
    }
    for (size_t next = 0; next < bytes.size();) {
        UChar32 character = 0;
        U8_NEXT(bytes.data(), next, bytes.size(), character);
        if (character < 0) {
            return false;
        }
    }
    return true;
}

} // namespace platform
