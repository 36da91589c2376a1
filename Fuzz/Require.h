#pragma once

#include <cstdlib>

/// Ends a fuzzer where an expectation of ours does not hold, so that the input is reported like a crash.
inline void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}
