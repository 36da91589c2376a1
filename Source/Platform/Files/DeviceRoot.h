#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/Error.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/Folder.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What the handles on one device root share: the root's descriptor, the current directory, and how paths are
/// resolved between them. It may be used by several threads at once.
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

    /// The current directory, and the names from the root to it, free of links.
    struct Place {
        Folder folder;
        std::vector<std::string> names;
    };

    [[nodiscard]] int rootDescriptor() const { return _root->descriptor(); }
    [[nodiscard]] std::shared_ptr<const Place> current() const;
    [[nodiscard]] std::shared_ptr<const Folder> currentFolder() const;
    /// Changes with every change of the current directory and whenever known folders were moved: what was
    /// found under an older generation has to be found again.
    [[nodiscard]] uint64_t generation() const { return _generation; }
    void foldersChanged() { ++_generation; }

    [[nodiscard]] Access access() const { return _access; }
    /// For good, and only before several threads use the root.
    Result<void> lookOnly();

    Result<void> changeCurrentDirectory(std::string_view path);
    /// Opens the folder that a path leads to, for acting inside of it, not for reading.
    Result<Descriptor> openFolder(std::string_view path) const;
    /// Opens a folder below `base`, through no link; ".." is refused (EINVAL).
    Result<Descriptor> openBelow(int base, std::string_view relativePath) const;
    /// Follows a path to its end, links included.
    Result<Target> follow(std::string_view path) const;
    /// A device has links at its top to the folders that hold its data, and copies of a device may lack them.
    /// Where nothing stands at such a name, and the folder is there, this is what the link would say; none
    /// for any other name.
    [[nodiscard]] std::optional<std::string_view> targetOfMissingLink(std::string_view topName) const;
    [[nodiscard]] bool lacksLinks() const;

  private:
    DeviceRoot(Descriptor root, Descriptor current, PathResolution resolution);

    /// Leaves the way to the kernel, which gives up at the first link; none where it cannot be asked.
    std::optional<Result<Descriptor>> openInOneCall(const Place& place, std::string_view path) const;

    std::shared_ptr<const Folder> _root;
    mutable std::mutex _currentMutex;
    std::shared_ptr<const Place> _current;
    std::atomic<uint64_t> _generation = 0;
    PathResolution _resolution;
    Access _access = Access::change;
};

} // namespace platform
