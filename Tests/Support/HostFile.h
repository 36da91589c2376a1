#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tests {

/// A file's bytes by the host's own calls, so that they can judge ours; none where it cannot be read.
inline std::string contentOf(const std::filesystem::path& hostPath) {
    std::ifstream file(hostPath, std::ios::binary);
    return {std::istreambuf_iterator(file), {}};
}

} // namespace tests
