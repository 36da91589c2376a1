#pragma once

class OZModelBuilder;

/// What the program looks for in the library of the window: opens the window on the device of a builder and
/// returns the status of the process when it is closed. `count` and `vector` are those of the process.
extern "C" int ozvarineDesktop(OZModelBuilder* modelBuilder, int count, char** vector);
