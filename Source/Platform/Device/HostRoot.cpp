#include "Platform/Device/HostRoot.h"

#include <sys/stat.h>

namespace platform {

bool isHostRoot(int folder) {
    struct stat host = {};
    struct stat device = {};
    return ::stat("/", &host) != 0 || ::fstat(folder, &device) != 0 ||
           (host.st_dev == device.st_dev && host.st_ino == device.st_ino);
}

} // namespace platform
