#include "StandIns.h"

#include <cstdlib>
#include <iostream>

int main(int count, char** values) {
    const char* const deviceFolder = std::getenv("OZVARINE_DEVICE");
    if (!deviceFolder || !*deviceFolder) {
        std::cerr << "OZVARINE_DEVICE is not set; it has to name the device folder to work on\n";
        return 1;
    }
    return standins::run(deviceFolder, {values, values + count});
}
