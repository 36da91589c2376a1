#include "Tests/Support/Mounts.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

bool enterMountNamespace() {
    return (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// The folders that this process has mounted something on.
std::vector<std::string> mounted;

} // namespace

bool hasOwnMounts() {
    static const bool has =
        ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return has;
}

void unmountAll() {
    for (; !mounted.empty(); mounted.pop_back()) {
        ::umount2(mounted.back().c_str(), MNT_DETACH);
    }
}

std::optional<std::string> inMountNamespace(const std::function<std::string()>& block) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return std::nullopt;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        if (!enterMountNamespace()) {
            ::_exit(1);
        }
        const std::string text = block();
        // The system takes its time with the mounts of processes that have ended.
        unmountAll();
        ::_exit(::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 2);
    }
    ::close(ends[1]);
    std::string text;
    std::array<char, 4096> chunk{};
    for (ssize_t count = 0; (count = ::read(ends[0], chunk.data(), chunk.size())) > 0;) {
        text.append(chunk.data(), static_cast<size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0 ? std::optional(text) : std::nullopt;
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

} // namespace tests
