#pragma once

#include "Platform/Device/DeviceFacts.h"
#include "Platform/Files/FileManager.h"

#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace platform {

/// How the device's storage is divided, and how full it is. Sizes are bytes, read afresh at each call, and 0
/// where nothing tells. Safe from any thread.
class Volumes {
  public:
    /// `known` are the volumes whose sizes are facts; the others are measured on the host.
    Volumes(FileManager fileManager, std::map<std::string, VolumeFacts, std::less<>> known);

    [[nodiscard]] std::string rootMountPoint() const { return "/"; }
    /// "/var", or "/" on a device with one partition. Found out once: two mount points of the same total size
    /// are one partition.
    [[nodiscard]] std::string dataMountPoint() const;
    [[nodiscard]] bool hasSinglePartition() const;
    [[nodiscard]] std::set<std::string> allMountPoints() const;
    [[nodiscard]] uint64_t storageSpaceForMountPoint(std::string_view mountPoint) const;
    [[nodiscard]] uint64_t freeSpaceForMountPoint(std::string_view mountPoint) const;
    /// Sums over all mount points.
    [[nodiscard]] uint64_t totalStorageSpace() const;
    [[nodiscard]] uint64_t totalFreeSpace() const;

  private:
    [[nodiscard]] VolumeFacts measure(std::string_view mountPoint) const;

    mutable std::mutex _mutex;
    mutable FileManager _fileManager;
    std::map<std::string, VolumeFacts, std::less<>> _known;
    mutable std::string _dataMountPoint;
};

} // namespace platform
