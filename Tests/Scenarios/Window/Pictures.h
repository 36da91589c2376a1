#pragma once

#include "Tests/Scenarios/Runner/Text.h"

#include <string>

namespace scenarios {

/// The bytes of a PNG file of one colour, "RRGGBBAA" with the opacity not multiplied in. Kinds: "crushed",
/// "grey", "palette" (both take red for the value), "opaque" (no opacity), "16" (bits), "interlaced", and
/// "claims=WIDTHxHEIGHT", a size that the header tells and the data does not have.
[[nodiscard]] std::string pngFile(const std::string& size, const std::string& color, const Words& kinds);

} // namespace scenarios
