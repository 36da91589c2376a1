#pragma once

#include <filesystem>
#include <string>

namespace tests {

/// A file's bytes by the host's own calls, so that they can judge ours; none where it cannot be read.
std::string contentOf(const std::filesystem::path& hostPath);

} // namespace tests
