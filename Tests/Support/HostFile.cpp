#include "Tests/Support/HostFile.h"

#include <fstream>
#include <iterator>

namespace tests {

std::string contentOf(const std::filesystem::path& hostPath) {
    std::ifstream file(hostPath, std::ios::binary);
    return {std::istreambuf_iterator(file), {}};
}

} // namespace tests
