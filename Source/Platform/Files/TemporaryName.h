#pragma once

#include <string>
#include <string_view>

namespace platform {

/// A name, new at each call, for what stands beside an item until it takes the item's place, or goes. Two
/// that work at once never have one name; a process that was killed may have left something of that name
/// behind.
[[nodiscard]] std::string temporaryNameFor(std::string_view name);

} // namespace platform
