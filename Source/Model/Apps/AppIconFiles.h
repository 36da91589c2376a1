#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {
class FileManager;
}

/// Whether one of the icon files that a bundle's Info.plist names is there, under its own name or that of a
/// twin for another screen.
[[nodiscard]] bool bundleHasIconFile(platform::FileManager& fileManager, std::string_view bundlePath);

/// The files of a bundle's icon in all their sizes, by their device paths: those that its Info.plist names
/// and their twins for other screens, or, where none of them is there, those with names that icons usually
/// have.
[[nodiscard]] std::vector<std::string> iconFilesOfBundle(platform::FileManager& fileManager,
                                                         std::string_view bundlePath);
