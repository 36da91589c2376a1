#include "Launch/LauncherOptions.h"

#include <fmt/format.h>

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
    options.vector.emplace_back(arguments.empty() ? "ozvarine" : arguments.front());
    if (index < arguments.size()) {
        options.vector.insert(options.vector.end(), arguments.begin() + static_cast<ptrdiff_t>(index),
                              arguments.end());
    }
    return options;
}

std::string LauncherOptions::help() {
    return "usage: ozvarine [--device DIR] [--dry-run] SWITCH...\n"
           "\n"
           "Cleans the file tree of a jailbroken iOS device.\n"
           "\n"
           "  --device DIR   the device: a file tree whose top is the device's \"/\", or a device folder\n"
           "                 (default: the environment's OZVARINE_DEVICE)\n"
           "  --dry-run      -clean only analyses: it deletes nothing and restarts nothing\n"
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
           "\n"
           "The log of the last run is var/mobile/Library/Ozvarine/junk.txt in the device's tree.\n";
}

std::string LauncherOptions::version() {
    return fmt::format("ozvarine {}\n", OZVARINE_VERSION);
}
