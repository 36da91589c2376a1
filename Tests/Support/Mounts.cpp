#include "Tests/Support/Mounts.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace tests {

namespace {

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
