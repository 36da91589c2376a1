#include "Interface/Screens/Chooser/MountedDevices.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include <sys/stat.h>

namespace {

/// Where device trees keep what no other system has; the last is a device folder.
constexpr std::array marks = {"/System/Library/CoreServices/SystemVersion.plist",
                              "/private/var/mobile/Library", "/var/mobile/Library",
                              "/Root/private/var/mobile/Library"};

constexpr size_t mountPointField = 4;

/// Blanks and backslashes of a path are written as "\040" there.
std::string unescaped(const std::string& text) {
    std::string path;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 3 < text.size()) {
            path += static_cast<char>(std::strtol(text.substr(at + 1, 3).c_str(), nullptr, 8));
            at += 3;
        } else {
            path += text[at];
        }
    }
    return path;
}

bool looksLikeDevice(const std::string& folder) {
    return std::ranges::any_of(marks, [&](const char* mark) {
        struct stat status = {};
        return ::lstat((folder + mark).c_str(), &status) == 0;
    });
}

} // namespace

std::vector<std::string> mountedDevices(std::string_view mounts) {
    std::vector<std::string> devices;
    std::istringstream lines{std::string(mounts)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string field;
        for (size_t index = 0; index <= mountPointField && fields >> field; ++index) {
        }
        const std::string folder = unescaped(field);
        if (folder != "/" && looksLikeDevice(folder) && std::ranges::find(devices, folder) == devices.end()) {
            devices.push_back(folder);
        }
    }
    return devices;
}

std::vector<std::string> mountedDevices() {
    std::ifstream file("/proc/self/mountinfo");
    return mountedDevices(std::string{std::istreambuf_iterator<char>(file), {}});
}
