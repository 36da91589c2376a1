#include "Launch/StandardStreams.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

void secureStandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
    // A limit for the size of files is an error of the write, told like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        // The lowest free number is the one that was found closed.
        if (::fcntl(number, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0) {
            std::abort();
        }
    }
}

bool flushStandardOutput() {
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}
