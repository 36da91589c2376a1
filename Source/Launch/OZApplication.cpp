#include "Launch/OZApplication.h"

#include "Platform/Folder.h"

#include <cstdio>

namespace {

struct Executable {
    double sinceFoundationVersion;
    std::string_view name;
};

// The newest generation first: the first that fits serves.
constexpr Executable executables[] = {
    {1140.11, OZApplication::allExecutableNames[3]},
    {1047.2, OZApplication::allExecutableNames[2]},
    {992.0, OZApplication::allExecutableNames[1]},
};

} // namespace

std::string_view OZApplication::executableName(double foundationVersion) {
    for (const auto& executable : executables) {
        if (foundationVersion >= executable.sinceFoundationVersion) {
            return executable.name;
        }
    }
    return allExecutableNames[0];
}

std::string OZApplication::executablePath(double foundationVersion) {
    return platform::joinPath(bundlePath, executableName(foundationVersion));
}

std::string OZApplication::launcherPath() {
    return platform::joinPath(bundlePath, launcherName);
}

bool OZApplication::ensureCorrectExecutable(double foundationVersion) {
    if (foundationVersion >= executables[0].sinceFoundationVersion) {
        return true;
    }
    std::fputs("This executable is not meant to be run on the current iOS version, aborting...\n", stderr);
    return false;
}
