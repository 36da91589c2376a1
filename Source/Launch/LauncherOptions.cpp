#include "Launch/LauncherOptions.h"

#include <algorithm>

#include <fmt/format.h>

namespace {

constexpr std::string_view synopsis = "ozvarine [--device DIR] [--dry-run] SWITCH...";

bool isLauncherOption(const std::string& argument) {
    return argument == "--device" || argument == "--dry-run";
}

} // namespace

std::expected<LauncherOptions, std::string> LauncherOptions::parse(const std::vector<std::string>& arguments,
                                                                   const char* environmentDevice) {
    LauncherOptions options;
    if (environmentDevice != nullptr && *environmentDevice != '\0') {
        options.device = environmentDevice;
    }
    size_t index = 1;
    for (; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--help") {
            options.request = Request::help;
        } else if (argument == "--version") {
            options.request = Request::version;
        } else if (argument == "--dry-run") {
            options.dryRun = Analyze::yes;
        } else if (argument == "--device") {
            if (++index == arguments.size() || arguments[index].empty()) {
                return std::unexpected("--device needs a directory: a device's file tree or a device folder");
            }
            options.device = arguments[index];
        } else {
            break;
        }
    }
    const auto rest = arguments.begin() + static_cast<ptrdiff_t>(std::min(index, arguments.size()));
    // Behind the switch nobody would look at them: a dry run would be a cleanup.
    if (const auto late = std::find_if(rest, arguments.end(), isLauncherOption); late != arguments.end()) {
        return std::unexpected(fmt::format("{} belongs in front of the switch: {}", *late, synopsis));
    }
    options.vector.emplace_back(arguments.empty() ? "ozvarine" : arguments.front());
    options.vector.insert(options.vector.end(), rest, arguments.end());
    return options;
}

std::string LauncherOptions::help() {
    return fmt::format("usage: {}\n", synopsis) +
           "\n"
           "Cleans the file tree of a jailbroken iOS device.\n"
           "\n"
           "  --device DIR   the device: a file tree whose top is the device's \"/\", or a device folder\n"
           "                 (default: the environment's OZVARINE_DEVICE)\n"
           "  --dry-run      -clean only analyses: nothing is deleted, restarted or restored\n"
           "  --version      prints the version\n"
           "  --help         prints this text\n"
           "\n"
           "Switches:\n"
           "  -clean                 runs the enabled cleanup steps\n"
           "    -printresults        ... and prints a record for scripts\n"
           "    -respring            ... and restarts the home screen\n"
           "    -autorespring        ... and restarts the home screen if caches or temporary files were "
           "cleaned\n"
           "  -cli                   shows a menu on the terminal\n"
           "  -respring              rebuilds the icon cache and restarts the home screen\n"
           "  -restore-togglable-items\n"
           "                         enables all add-ons, preference bundles and launch daemons again\n"
           "\n"
           "The log of the last run is var/mobile/Library/Ozvarine/junk.txt in the device's tree.\n";
}

std::string LauncherOptions::version() {
    return fmt::format("ozvarine {}\n", OZVARINE_VERSION);
}
