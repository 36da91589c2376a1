#include "Launch/OZApplication.h"

#include "Platform/Device/Generations.h"
#include "Platform/Files/Folder.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

struct Executable {
    double sinceFoundationVersion;
    std::string_view name;
};

// The newest generation first: the first that fits serves, and the last fits always.
constexpr std::array executables = {
    Executable{ios::v8_0, OZApplication::allExecutableNames[3]},
    Executable{ios::v7_0, OZApplication::allExecutableNames[2]},
    Executable{ios::v6_0, OZApplication::allExecutableNames[1]},
    Executable{0, OZApplication::allExecutableNames[0]},
};

} // namespace

std::string_view OZApplication::executableName(double foundationVersion) {
    const auto* const fitting = std::ranges::find_if(executables, [&](const Executable& executable) {
        return foundationVersion >= executable.sinceFoundationVersion;
    });
    return fitting == executables.end() ? executables.back().name : fitting->name;
}

std::string OZApplication::executablePath(double foundationVersion) {
    return platform::joinPath(bundlePath, executableName(foundationVersion));
}

std::string OZApplication::launcherPath() {
    return platform::joinPath(bundlePath, launcherName);
}

std::string_view OZApplication::executableCalledBy(std::string_view path, double foundationVersion) {
    const auto called = std::ranges::find(executables, platform::lastPathComponent(path), &Executable::name);
    return called == executables.end() ? executableName(foundationVersion) : called->name;
}

bool OZApplication::ensureCorrectExecutable(std::string_view name, double foundationVersion) {
    const auto* const executable = std::ranges::find(executables, name, &Executable::name);
    if (executable != executables.end() && foundationVersion >= executable->sinceFoundationVersion) {
        return true;
    }
    std::fputs("This executable is not meant to be run on the current iOS version, aborting...\n", stderr);
    return false;
}
