#include "Interface/Screens/Clean/DiskUsage.h"

#include "Categories/ByteText.h"
#include "Platform/Device/Device.h"

namespace {

std::string sizeText(uint64_t bytes) {
    return humanReadableStringFromBytes(bytes, {.unit = unitForAnySize(bytes)});
}

} // namespace

std::string PartitionUsage::name() const {
    return mountPoint == "/" ? "System" : mountPoint == "/private/var" ? "Data" : mountPoint;
}

std::string PartitionUsage::sizesText() const {
    return sizeText(used()) + " / " + sizeText(size);
}

std::vector<PartitionUsage> diskUsageOf(const platform::Device& device) {
    const auto& volumes = device.volumes();
    std::vector<PartitionUsage> partitions;
    for (const auto& mountPoint : volumes.allMountPoints()) {
        const uint64_t size = volumes.storageSpaceForMountPoint(mountPoint);
        if (size > 0) {
            partitions.push_back(
                {.mountPoint = mountPoint, .size = size, .free = volumes.freeSpaceForMountPoint(mountPoint)});
        }
    }
    return partitions;
}
