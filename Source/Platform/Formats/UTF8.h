#pragma once

#include <string_view>

namespace platform {

/// True for text that is all valid UTF-8; so is the empty one.
[[nodiscard]] bool isUTF8(std::string_view bytes);

} // namespace platform
