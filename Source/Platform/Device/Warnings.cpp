#include "Platform/Device/Warnings.h"

#include <cstdio>

#include <fmt/format.h>

namespace platform {

void Warnings::tell(const std::string& line) const {
    if (_receiver) {
        _receiver(line);
    } else {
        std::fputs((line + "\n").c_str(), stderr);
    }
}

} // namespace platform
