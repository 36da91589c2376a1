#include "Launch/JailbreakLibrary.h"

#include "Platform/Device/Generations.h"

#include <tuple>

#include <unistd.h>

namespace {

constexpr double sinceFoundationVersion = ios::v11_1;
constexpr std::string_view libraryPath = "/electra/libjailbreak.dylib";
constexpr std::string_view fixSymbol = "jb_oneshot_fix_setuid_now";

} // namespace

bool callDeviceLibrary(std::string_view /*path*/, std::string_view /*symbol*/, int /*processIdentifier*/) {
    return false;
}

void fixSetuidOnNewerPlatforms(double foundationVersion, const LibraryCall& call) {
    if (foundationVersion >= sinceFoundationVersion) {
        std::ignore = call(libraryPath, fixSymbol, ::getpid());
    }
}
