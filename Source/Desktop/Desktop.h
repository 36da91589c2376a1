#pragma once

class DeviceOpener;

/// What the program looks for in the library of the window: opens the window on the devices of an opener and
/// returns the status of the process when it is closed. `count` and `vector` are those of a process.
extern "C" int ozvarineDesktop(DeviceOpener* opener, int count, char** vector);
