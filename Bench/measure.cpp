// Runs a command and tells what it took: measure COUNT COMMAND [ARGUMENT…] writes to standard error a line of
// the seconds on the clock and the largest memory of any of its processes in KiB. COUNT runs follow one
// another.
//
// It is a program of its own, since a process starts with the peak memory of the one that started it: this
// one is small.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long peakOfRun(char** command) {
    pid_t child = 0;
    if (const int error = ::posix_spawnp(&child, command[0], nullptr, nullptr, command, environ);
        error != 0) {
        std::fprintf(stderr, "measure: %s: %s\n", command[0], std::strerror(error));
        std::exit(EXIT_FAILURE);
    }
    int status = 0;
    struct rusage usage = {};
    while (::wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "measure: %s failed (wait status %d)\n", command[0], status);
        std::exit(EXIT_FAILURE);
    }
    return usage.ru_maxrss;
}

} // namespace

int main(int count, char** vector) {
    if (count < 3) {
        std::fputs("usage: measure COUNT COMMAND [ARGUMENT…]\n", stderr);
        return EXIT_FAILURE;
    }
    long peak = 0;
    const auto start = std::chrono::steady_clock::now();
    for (long left = std::atol(vector[1]); left > 0; --left) {
        const long ofRun = peakOfRun(vector + 2);
        peak = ofRun > peak ? ofRun : peak;
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "%.6f %ld\n", taken.count(), peak);
    return EXIT_SUCCESS;
}
