#include "Platform/Formats/UTF8.h"

#include <algorithm>
#include <limits>

#include <unicode/ustring.h>

namespace platform {

bool isUTF8(std::string_view bytes) {
    // Most text is plain, which takes a fraction of the time to see.
    if (std::ranges::all_of(bytes, [](char byte) { return static_cast<signed char>(byte) >= 0; })) {
        return true;
    }
    if (bytes.size() > size_t{std::numeric_limits<int32_t>::max()}) {
        return false;
    }
    UErrorCode error = U_ZERO_ERROR;
    // Measures alone: that there is no room for the text is what it says of valid bytes.
    u_strFromUTF8(nullptr, 0, nullptr, bytes.data(), static_cast<int32_t>(bytes.size()), &error);
    return error != U_INVALID_CHAR_FOUND;
}

} // namespace platform
