#include "Launch/Preconditions.h"

#include "Platform/Device.h"

#include <array>

namespace {

using Check = std::optional<Refusal> (*)(platform::Device& device, const LauncherOptions& options);

// Other switches have no run to write of.
std::optional<Refusal> logWithoutCleanup(platform::Device& /*device*/, const LauncherOptions& options) {
    const bool cleans = options.vector.size() > 1 && options.vector[1] == "-clean";
    return options.logFile && !cleans
               ? std::optional(Refusal{.message = "--log is for -clean alone; take it away, or name -clean"})
               : std::nullopt;
}

// In the order in which they are looked at.
constexpr std::array<Check, 1> checks = {logWithoutCleanup};

} // namespace

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
