#include "Platform/Device/Volumes.h"

namespace platform {

Volumes::Volumes(FileManager fileManager, std::map<std::string, VolumeFacts, std::less<>> known)
    : _fileManager(std::move(fileManager))
    , _known(std::move(known)) {}

VolumeFacts Volumes::measure(std::string_view mountPoint) const {
    if (const auto found = _known.find(mountPoint); found != _known.end()) {
        return found->second;
    }
    const std::scoped_lock lock(_mutex);
    const auto measured = _fileManager.attributesOfFileSystemForPath(mountPoint);
    return measured ? VolumeFacts{.size = measured->size, .free = measured->free} : VolumeFacts{};
}

std::string Volumes::dataMountPoint() const {
    {
        const std::scoped_lock lock(_mutex);
        if (!_dataMountPoint.empty()) {
            return _dataMountPoint;
        }
    }
    const std::string found = measure("/").size == measure("/var").size ? "/" : "/var";
    const std::scoped_lock lock(_mutex);
    return _dataMountPoint = found;
}

bool Volumes::hasSinglePartition() const {
    return dataMountPoint() == rootMountPoint();
}

std::set<std::string> Volumes::allMountPoints() const {
    return {rootMountPoint(), dataMountPoint()};
}

uint64_t Volumes::storageSpaceForMountPoint(std::string_view mountPoint) const {
    return measure(mountPoint).size;
}

uint64_t Volumes::freeSpaceForMountPoint(std::string_view mountPoint) const {
    return measure(mountPoint).free;
}

uint64_t Volumes::totalStorageSpace() const {
    uint64_t sum = 0;
    for (const auto& mountPoint : allMountPoints()) {
        sum += storageSpaceForMountPoint(mountPoint);
    }
    return sum;
}

uint64_t Volumes::totalFreeSpace() const {
    uint64_t sum = 0;
    for (const auto& mountPoint : allMountPoints()) {
        sum += freeSpaceForMountPoint(mountPoint);
    }
    return sum;
}

} // namespace platform
