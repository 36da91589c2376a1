#pragma once

#include "Platform/Descriptor.h"
#include "Platform/Error.h"
#include "Platform/FileManager.h"
#include "Platform/Folder.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What the handles on one device root share: the root's descriptor, the current directory, and how paths are
/// resolved between them.
class DeviceRoot {
  public:
    static Result<std::shared_ptr<DeviceRoot>> open(const std::string& hostFolder, PathResolution resolution);

    /// Where a path leads: a folder, or the folder that holds something else and that item's name.
    struct Target {
        Descriptor folder;
        /// Names from the root to the folder, free of links.
        std::vector<std::string> names;
        /// Empty when the path leads to a folder.
        std::string leaf;
    };

    [[nodiscard]] int rootDescriptor() const { return _root->descriptor(); }
    [[nodiscard]] const std::shared_ptr<const Folder>& currentFolder() const { return _current; }
    [[nodiscard]] const std::vector<std::string>& currentNames() const { return _currentNames; }
    /// Changes with every change of the current directory.
    [[nodiscard]] uint64_t generation() const { return _generation; }

    Result<void> changeCurrentDirectory(std::string_view path);
    /// Opens the folder that a path leads to, for acting inside of it, not for reading.
    Result<Descriptor> openFolder(std::string_view path) const;
    /// Opens a folder below `base`, through no link and no "..".
    Result<Descriptor> openBelow(int base, std::string_view relativePath) const;
    /// Follows a path to its end, links included.
    Result<Target> follow(std::string_view path) const;

  private:
    DeviceRoot(Descriptor root, PathResolution resolution);

    std::shared_ptr<const Folder> _root;
    std::shared_ptr<const Folder> _current;
    std::vector<std::string> _currentNames;
    uint64_t _generation = 0;
    PathResolution _resolution;
};

} // namespace platform
