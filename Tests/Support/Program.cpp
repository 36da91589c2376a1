#include "Tests/Support/Program.h"

#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

Outcome shell(const std::string& commandLine) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {};
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::unsetenv("OZVARINE_DEVICE");
        ::execl("/bin/sh", "sh", "-c", commandLine.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    Outcome outcome;
    std::array<char, 4096> chunk{};
    for (ssize_t count = 0; (count = ::read(ends[0], chunk.data(), chunk.size())) > 0;) {
        outcome.output.append(chunk.data(), static_cast<size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

} // namespace tests
