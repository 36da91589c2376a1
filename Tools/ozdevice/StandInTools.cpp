#include "StandInTools.h"

#include <array>
#include <stdexcept>

namespace ozdevice {
namespace {

namespace fs = std::filesystem;

constexpr std::array toolPaths = {"usr/bin/killall", "bin/launchctl", "bin/su", "usr/bin/uicache",
                                  "sbin/reboot"};

fs::path standInProgram() {
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    if (const fs::path path = folder / "../libexec/ozstandin"; fs::is_regular_file(path)) {
        return path;
    }
    throw std::runtime_error("the program of the stand-in tools is missing; build the target ozstandin");
}

} // namespace

void installStandInTools(const fs::path& toolsFolder) {
    // One copy under several names: a device folder stays usable when the build is gone.
    const fs::path first = toolsFolder / toolPaths.front();
    for (const char* const path : toolPaths) {
        const fs::path tool = toolsFolder / path;
        fs::create_directories(tool.parent_path());
        std::error_code cannotLink;
        if (tool != first) {
            fs::create_hard_link(first, tool, cannotLink);
        }
        if (tool == first || cannotLink) {
            fs::copy_file(standInProgram(), tool);
        }
    }
}

} // namespace ozdevice
