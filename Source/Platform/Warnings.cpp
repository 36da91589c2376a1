#include "Platform/Warnings.h"

#include <cstdio>

#include <fmt/format.h>

namespace platform {

void Warnings::tell(const std::string& line) const {
    if (_receiver) {
        _receiver(line);
    } else {
        fmt::print(stderr, "{}\n", line);
    }
}

} // namespace platform
