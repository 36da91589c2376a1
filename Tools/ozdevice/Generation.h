#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace ozdevice {

/// One generation of the system: its version numbers and where it keeps applications and their data. Paths
/// are device paths; an empty one means that the generation has no such folder.
struct Generation {
    std::string productVersion;
    double foundationVersion = 0;
    double coreFoundationVersion = 0;
    int major = 0;

    std::string_view userBundles;
    std::string_view userData;
    std::string_view pluginData;
    std::string_view groupData;
    std::string_view systemData;
    std::string_view systemGroupData;

    /// Bundles and data live in containers of their own, told apart by the metadata file in each.
    [[nodiscard]] bool hasContainers() const { return !groupData.empty(); }
    /// A model that ran this generation, in the form of "hw.machine".
    [[nodiscard]] std::string_view usualModel() const;

    /// The generation of a product version from 4 to 11, such as "9.3.5" or "9.3". A bare major number such
    /// as "9" stands for its last release that was commonly jailbroken. The error is one line for the user.
    static std::expected<Generation, std::string> make(std::string_view productVersion);
};

} // namespace ozdevice
