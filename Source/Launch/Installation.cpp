#include "Launch/Installation.h"

#include <array>
#include <filesystem>
#include <string_view>

#include <fmt/format.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Part {
    /// Relative to the folder above the executable's.
    std::string_view path;
    std::string_view purpose;
    int access;
};

constexpr std::array parts = {
    Part{"libexec/ozenter", "runs find, sed, dpkg and apt-get for a device", X_OK},
    Part{"libexec/libozenter.so", "takes find, sed and dpkg-query into a device's tree", R_OK},
    Part{"libexec/apt.conf", "keeps apt-get inside a device's tree", R_OK},
    Part{"share/ozvarine/Info.plist", "holds the program's name and version", R_OK},
    Part{"share/ozvarine/English.strings", "holds the texts", R_OK},
    Part{"share/ozvarine/lang", "tells which folders belong to which language", R_OK},
};

fs::path prefixOfInstallation(std::error_code& error) {
    return fs::read_symlink("/proc/self/exe", error).parent_path().parent_path();
}

} // namespace

std::string installedFile(std::string_view path) {
    std::error_code error;
    return prefixOfInstallation(error) / path;
}

std::optional<std::string> missingPartOfInstallation() {
    std::error_code error;
    const fs::path prefix = prefixOfInstallation(error);
    if (error) {
        return "/proc is not mounted, so the program cannot find its own files; mount it and start again";
    }
    for (const auto& [path, purpose, access] : parts) {
        const fs::path file = prefix / path;
        if (!fs::is_regular_file(file, error) || ::access(file.c_str(), access) != 0) {
            return fmt::format("{} is missing or cannot be used (it {}); build or install the program again, "
                               "all of it",
                               file.string(), purpose);
        }
    }
    return std::nullopt;
}
