#include "Launch/UserNamespace.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

// The helper that takes tools into a tree uses this, too, and links no library of ours.
namespace {

void writeToProcessFile(const char* path, const char* text, int length) {
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    if (file >= 0) {
        // A map that could not be written shows when root is asked for.
        [[maybe_unused]] const auto written = ::write(file, text, static_cast<size_t>(length));
        ::close(file);
    }
}

void map(const char* path, unsigned inside, unsigned outside) {
    std::array<char, 64> line{};
    const int length = std::snprintf(line.data(), line.size(), "%u %u 1", inside, outside);
    writeToProcessFile(path, line.data(), length);
}

} // namespace

void enterUserNamespaceUnlessRoot(SeenAs number) {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (user == 0 || ::unshare(CLONE_NEWUSER) != 0) {
        return;
    }
    // The group can be mapped only when the process has given up to change its supplementary groups.
    writeToProcessFile("/proc/self/setgroups", "deny", 4);
    map("/proc/self/uid_map", number == SeenAs::root ? 0 : user, user);
    map("/proc/self/gid_map", number == SeenAs::root ? 0 : group, group);
}
