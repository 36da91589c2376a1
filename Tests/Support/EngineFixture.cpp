#include "Tests/Support/EngineFixture.h"

#include <sstream>

namespace tests {

std::vector<std::string> EngineFixture::loggedPaths() const {
    std::vector<std::string> paths;
    std::istringstream lines(log());
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('/') || line.starts_with("./")) {
            paths.push_back(line);
        }
    }
    return paths;
}

} // namespace tests
