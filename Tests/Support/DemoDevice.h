#pragma once

#include <filesystem>
#include <string>

namespace tests {

/// Fills a folder with the demo device of a version of iOS, as `ozdevice create` makes it with few files more
/// than it needs. Making one takes long, so it is made once a day and build, and copied.
void copyDemoDevice(const std::filesystem::path& folder, const std::string& version = "11.1.2");

} // namespace tests
