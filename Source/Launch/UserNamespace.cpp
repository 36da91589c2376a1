#include "Launch/UserNamespace.h"

#include "Platform/Files/Descriptor.h"

#include <string>

#include <fcntl.h>
#include <fmt/format.h>
#include <sched.h>
#include <unistd.h>

namespace {

void writeToProcessFile(const char* path, const std::string& text) {
    const platform::Descriptor file(::open(path, O_WRONLY | O_CLOEXEC));
    if (file) {
        // A map that could not be written shows when root is asked for.
        std::ignore = ::write(file.get(), text.data(), text.size());
    }
}

} // namespace

void enterUserNamespaceUnlessRoot() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (user == 0 || ::unshare(CLONE_NEWUSER) != 0) {
        return;
    }
    // The group can be mapped only when the process has given up to change its supplementary groups.
    writeToProcessFile("/proc/self/setgroups", "deny");
    writeToProcessFile("/proc/self/uid_map", fmt::format("0 {} 1", user));
    writeToProcessFile("/proc/self/gid_map", fmt::format("0 {} 1", group));
}
