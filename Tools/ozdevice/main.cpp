#include "CommandLine.h"

#include <sys/stat.h>

int main(int count, char** values) {
    // A device's tree has the permissions that its tables say.
    ::umask(022);
    return ozdevice::runCommandLine({values + 1, values + count});
}
