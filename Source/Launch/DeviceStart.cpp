#include "Launch/DeviceStart.h"

#include "Platform/Device/Device.h"

#include <fmt/format.h>

std::expected<std::unique_ptr<platform::Device>, std::string> openDevice(const std::string& folder,
                                                                         const LauncherOptions& options) {
    auto device = platform::Device::open(folder, options.given);
    if (!device || (*device)->facts().foundationVersion != 0) {
        return device;
    }
    const std::string& version = (*device)->facts().systemVersion;
    if (version.empty()) {
        return std::unexpected(
            fmt::format("{} does not tell its iOS version, neither in Device.plist nor in "
                        "System/Library/CoreServices/SystemVersion.plist; is it a device's tree? If it "
                        "is, name the version with --ios VERSION",
                        folder));
    }
    return std::unexpected(
        version == options.given.systemVersion
            ? fmt::format("\"{}\" is no iOS version from 4 on; name one such as 9.3.5", version)
            : fmt::format("{} tells a version that is no iOS version from 4 on; repair its Device.plist or "
                          "SystemVersion.plist",
                          folder));
}
