#include "Tests/Support/Host.h"

#include <sched.h>
#include <sys/mount.h>

namespace tests {

Outcome shell(const std::string& commandLine) {
    const std::string setting = "exec 2>&1 </dev/null; unset OZVARINE_DEVICE\n";
    FILE* const stream = ::popen((setting + commandLine).c_str(), "re");
    Outcome outcome;
    char chunk[4096];
    for (size_t count = 0; (count = std::fread(chunk, 1, sizeof chunk, stream)) > 0;) {
        outcome.output.append(chunk, count);
    }
    const int status = ::pclose(stream);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

// The folders that this process has mounted something on.
static std::vector<std::string> mounted;

bool hasOwnMounts() {
    static const bool has =
        ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return has;
}

void mountMemory(const std::filesystem::path& folder, uint64_t bytes) {
    const std::string options = "size=" + std::to_string(bytes);
    ASSERT_EQ(::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()), 0);
    mounted.push_back(folder);
}

void makeReadOnly(const std::filesystem::path& folder) {
    ASSERT_EQ(::mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, folder.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    mounted.push_back(folder);
}

void unmountAll() {
    for (; !mounted.empty(); mounted.pop_back()) {
        ::umount2(mounted.back().c_str(), MNT_DETACH);
    }
}

} // namespace tests
