#include "Tests/Support/Program.h"

#include <array>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> chunk{};
    for (ssize_t count = 0; (count = ::read(descriptor, chunk.data(), chunk.size())) > 0;) {
        text.append(chunk.data(), static_cast<size_t>(count));
    }
    ::close(descriptor);
    return text;
}

Outcome run(const std::string& path, const std::string& name, const std::vector<std::string>& arguments,
            const std::vector<std::string>& environment) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(err.data(), O_CLOEXEC) != 0) {
        return {};
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::unsetenv("OZVARINE_DEVICE");
        for (const auto& variable : environment) {
            ::putenv(const_cast<char*>(variable.c_str()));
        }
        std::vector<char*> vector = {const_cast<char*>(name.c_str())};
        for (const auto& argument : arguments) {
            vector.push_back(const_cast<char*>(argument.c_str()));
        }
        vector.push_back(nullptr);
        ::execv(path.c_str(), vector.data());
        ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    Outcome outcome;
    std::thread errors([&] { outcome.errors = readAll(err[0]); });
    outcome.output = readAll(out[0]);
    errors.join();
    int status = 0;
    struct rusage usage = {};
    ::wait4(child, &status, 0, &usage);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.peakMemory = static_cast<uint64_t>(usage.ru_maxrss) * 1024;
    return outcome;
}

} // namespace

Outcome runProgram(const std::string& name, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& environment) {
    return run(std::string(OZ_BINARY_DIRECTORY) + "/" + name, name, arguments, environment);
}

Outcome shell(const std::string& commandLine) {
    return run("/bin/sh", "sh", {"-c", "exec 2>&1; " + commandLine}, {});
}

} // namespace tests
