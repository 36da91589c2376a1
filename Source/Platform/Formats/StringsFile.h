#pragma once

#include "Platform/Formats/TextError.h"

#include <expected>
#include <map>
#include <string>
#include <string_view>

namespace platform {

/// Texts by key; both are UTF-8.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// Reads the content of a ".strings" file: pairs as `"key" = "text";` with comments between them, in UTF-8 or
/// UTF-16, or a property list whose texts make the table. Of several texts for one key the last counts. A
/// malformed file gives no table at all.
[[nodiscard]] std::expected<StringTable, TextError> parseStringsFile(std::string_view bytes);

} // namespace platform
