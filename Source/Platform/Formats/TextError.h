#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// Why a text that people may have written cannot be read.
struct TextError {
    /// The first line is 1; 0 where the fault belongs to no line.
    size_t line = 0;
    std::string reason;
};

} // namespace platform
