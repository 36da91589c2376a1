#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {
class Device;
}

/// One partition of a device, in bytes.
struct PartitionUsage {
    std::string mountPoint;
    uint64_t size = 0;
    uint64_t free = 0;

    /// What a person calls it: the system's, the data's, else its mount point.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] uint64_t used() const { return size > free ? size - free : 0; }
    /// From 0 to 1.
    [[nodiscard]] double usedShare() const {
        return size == 0 ? 0 : static_cast<double>(used()) / static_cast<double>(size);
    }
    /// "1.50 GiB / 4.00 GiB": what is used, and of how much.
    [[nodiscard]] std::string sizesText() const;
};

/// The partitions of a device whose size is known, the system's first. Asks the file systems; any thread may.
[[nodiscard]] std::vector<PartitionUsage> diskUsageOf(const platform::Device& device);
