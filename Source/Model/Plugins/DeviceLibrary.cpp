#include "Model/Plugins/DeviceLibrary.h"

bool loadDeviceLibrary(std::string_view /*devicePath*/) {
    return false;
}
