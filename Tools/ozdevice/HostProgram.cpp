#include "HostProgram.h"

#include "Platform/Files/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ozdevice {
namespace {

using platform::Descriptor;

// Where the tools lie that a package manager needs; an ordinary user's search path often lacks the last two.
constexpr const char* searchPath = "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin";

// No file in a package is newer than this, 2017-11-10; the same packages come out at any time.
constexpr long newestPackagedDate = 1510272000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::string readAll(int file) {
    std::string content;
    char buffer[4096];
    for (ssize_t count; (count = ::read(file, buffer, sizeof buffer)) > 0;) {
        content.append(buffer, static_cast<size_t>(count));
    }
    return content;
}

} // namespace

void runHostProgram(const std::vector<std::string>& commandLine, const std::string& temporaryDirectory) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::system_category(), "pipe");
    }
    const Descriptor reader(ends[0]);
    Descriptor writer(ends[1]);
    std::vector<std::string> words = commandLine;
    std::vector<std::string> variables{fmt::format("PATH={}", searchPath), "LC_ALL=C.UTF-8",
                                       fmt::format("TMPDIR={}", temporaryDirectory),
                                       fmt::format("SOURCE_DATE_EPOCH={}", newestPackagedDate)};
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> environment = pointers(variables);
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error(errno, std::system_category(), "fork");
    }
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDONLY);
        ::dup2(nothing, STDIN_FILENO);
        ::dup2(writer.get(), STDOUT_FILENO);
        ::dup2(writer.get(), STDERR_FILENO);
        ::execvpe(arguments[0], arguments.data(), environment.data());
        ::_exit(127);
    }
    writer.reset();
    const std::string output = readAll(reader.get());
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
        throw std::runtime_error(
            fmt::format("cannot run {}; install it (package dpkg)", commandLine.front()));
    }
    if (status != 0) {
        throw std::runtime_error(fmt::format("{} failed: {}", fmt::join(commandLine, " "), output));
    }
}

} // namespace ozdevice
