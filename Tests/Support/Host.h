#pragma once

#include "Tests/Support/Usual.h"

#include <cstdio>

/// What tests do with this machine itself, by its own calls and tools, so that these can judge ours.
namespace tests {

/// Whether a sanitizer watches the memory: what a program takes then says nothing about what it takes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool sanitized = true;
#elif defined(__has_feature)
inline constexpr bool sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool sanitized = false;
#endif

/// The text with one part of it replaced wherever it is.
inline std::string replaced(std::string text, std::string_view part, std::string_view by) {
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size()) {
        text.replace(at, part.size(), by);
    }
    return text;
}

/// A file's bytes; none where it cannot be read.
inline std::string contentOf(const std::filesystem::path& hostPath) {
    std::ifstream file(hostPath, std::ios::binary);
    return {std::istreambuf_iterator(file), {}};
}

/// What a variable of the environment wishes for.
inline uint64_t numberFrom(const char* variable, uint64_t usual) {
    const char* wanted = std::getenv(variable);
    return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : usual;
}

/// A file that stands in for standard output during its life.
class StandardOutput {
  public:
    explicit StandardOutput(const std::string& path) {
        std::fflush(stdout);
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_CLOEXEC, 0600);
        ::dup2(file, STDOUT_FILENO);
        ::close(file);
    }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() {
        std::fflush(stdout);
        ::dup2(_saved, STDOUT_FILENO);
        ::close(_saved);
    }

  private:
    int _saved = ::dup(STDOUT_FILENO);
};

/// How a command line ended and what it wrote.
struct Outcome {
    int status = -1;
    std::string output;
};

/// Runs a command line in the host's shell, with standard input empty; the output holds both streams.
Outcome shell(const std::string& commandLine);

/// Whether this process may have mounts of its own, which it has from the first call on.
bool hasOwnMounts();
/// For a process with such mounts: a file system in memory, of so many bytes.
void mountMemory(const std::filesystem::path& folder, uint64_t bytes);
void makeReadOnly(const std::filesystem::path& folder);
/// Takes off whatever those two have mounted.
void unmountAll();

} // namespace tests
