#include "Model/Services/OZStdIO.h"

#include <cstdio>

void OZStdIO::printf(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}
