#pragma once

#include "Platform/Device/DeviceNames.h"

#include <array>
#include <string>
#include <string_view>

/// The fixed places of the installed program on a device, and which of its executables serves which
/// generation of the platform.
class OZApplication {
  public:
    OZApplication() = delete;

    static constexpr std::string_view bundlePath = devicename::programBundle;
    static constexpr std::string_view cliLauncherPath = "/usr/bin/ozvarine";
    static constexpr std::string_view libPath = "/Library/MobileSubstrate/DynamicLibraries/OzvarineLib.dylib";
    static constexpr std::string_view dataDirPath = devicename::programData;
    static constexpr std::string_view launcherName = "Ozvarine";
    /// From the oldest generation to the newest.
    static constexpr std::array<std::string_view, 4> allExecutableNames = {"iOS4_Ozvarine", "iOS6_Ozvarine",
                                                                           "iOS7_Ozvarine", "iOS8_Ozvarine"};

    static std::string_view executableName(double foundationVersion);
    static std::string executablePath(double foundationVersion);
    static std::string launcherPath();
    /// Which executable a process is that was called by `path`: the one of that name, or, for the launcher,
    /// the one that serves the version.
    static std::string_view executableCalledBy(std::string_view path, double foundationVersion);
    /// Whether an executable may run on the version, which is not older than its own generation; says so on
    /// standard error if not.
    [[nodiscard]] static bool ensureCorrectExecutable(std::string_view name, double foundationVersion);
};
