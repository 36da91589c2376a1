#pragma once

/// What a change to the device needs to come into force; a greater value is a stronger action.
enum class OZDeviceAction : int {
    none = 0,
    respring = 1,
    rebuildUICacheAndRespring = 2,
    reboot = 3,
};
