#pragma once

#include <string_view>

namespace platform {
class FileManager;
}

/// Whether one of the icon files that a bundle's Info.plist names is there, under its own name or that of a
/// twin for another screen.
[[nodiscard]] bool bundleHasIconFile(platform::FileManager& fileManager, std::string_view bundlePath);
