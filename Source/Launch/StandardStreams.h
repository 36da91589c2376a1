#pragma once

/// Makes sure that the descriptors 0 to 2 are taken, so that no file of a device gets the number that
/// messages are written to. What was closed stays without use: reading ends at once, and writing fails, as it
/// should. A reader that goes away does not end the process in the middle of its work. To be called first.
void secureStandardStreams();

/// Whether all that was written to standard output has arrived.
[[nodiscard]] bool flushStandardOutput();
