#include "Launch/Preconditions.h"

#include "Platform/Device.h"

#include <array>

namespace {

using Check = std::optional<Refusal> (*)(platform::Device& device, const LauncherOptions& options);

// In the order in which they are looked at.
constexpr std::array<Check, 0> checks = {};

} // namespace

std::optional<Refusal> refusalBeforeRun(platform::Device& device, const LauncherOptions& options) {
    for (const Check check : checks) {
        if (auto refusal = check(device, options)) {
            return refusal;
        }
    }
    return std::nullopt;
}
