#include "Platform/Files/TemporaryName.h"

#include <atomic>

#include <fmt/format.h>
#include <unistd.h>

namespace platform {

namespace {

// Leaves room for the rest within what a file system allows.
constexpr size_t longestStart = 200;

} // namespace

std::string temporaryNameFor(std::string_view name) {
    static std::atomic<unsigned> names = 0;
    return fmt::format(".{}.{}.{}.tmp", name.substr(0, longestStart), ::getpid(), names++);
}

} // namespace platform
