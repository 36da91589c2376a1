#include "Launch/LauncherOptions.h"

#include <algorithm>
#include <array>
#include <set>

#include <fmt/format.h>

namespace {

constexpr std::string_view synopsis = "ozvarine [OPTION...] SWITCH...";
constexpr std::string_view helpHint = "ozvarine --help lists options and switches";

struct Option {
    std::string_view name;
    /// What has to follow, in the words of an error message; empty for an option that stands alone.
    std::string_view value;
    void (*take)(LauncherOptions& options, const std::string& value);
};

constexpr std::array optionTable = {
    Option{"--device", "a directory: a device's file tree or a device folder",
           [](auto& options, auto& value) { options.device = value; }},
    Option{"--dry-run", "", [](auto& options, auto&) { options.dryRun = Analyze::yes; }},
    Option{"--log", "a file for the log, or - for standard output",
           [](auto& options, auto& value) { options.logFile = value; }},
    Option{"--strict", "", [](auto& options, auto&) { options.strict = true; }},
    Option{"--reset-settings", "", [](auto& options, auto&) { options.resetSettings = true; }},
    Option{"--ios", "a version such as 9.3.5",
           [](auto& options, auto& value) { options.given.systemVersion = value; }},
    Option{"--model", "a hardware model such as iPhone7,2",
           [](auto& options, auto& value) { options.given.hardwareModel = value; }},
    Option{"--help", "", [](auto& options, auto&) { options.request = LauncherOptions::Request::help; }},
    Option{"-h", "", [](auto& options, auto&) { options.request = LauncherOptions::Request::help; }},
    Option{"--version", "",
           [](auto& options, auto&) { options.request = LauncherOptions::Request::version; }},
};

// What people write who want no harm done; behind a switch it would not be looked at.
constexpr std::array<std::string_view, 4> harmlessWords = {"-dry-run", "-n", "-h", "-help"};

/// "--name=value" in its two halves; the second is none where there is no "=".
std::pair<std::string_view, std::optional<std::string>> halves(std::string_view argument) {
    const size_t end = argument.find('=');
    return end == std::string_view::npos
               ? std::pair(argument, std::optional<std::string>())
               : std::pair(argument.substr(0, end), std::optional(std::string(argument.substr(end + 1))));
}

bool looksLikeOption(const std::string& argument) {
    return argument.starts_with("--") || std::ranges::find(harmlessWords, argument) != harmlessWords.end();
}

} // namespace

std::expected<LauncherOptions, std::string> LauncherOptions::parse(const std::vector<std::string>& arguments,
                                                                   const char* environmentDevice) {
    LauncherOptions options;
    if (environmentDevice != nullptr && *environmentDevice != '\0') {
        options.device = environmentDevice;
    }
    std::set<std::string_view> given;
    size_t index = 1;
    for (; index < arguments.size(); ++index) {
        auto [name, value] = halves(arguments[index]);
        const auto* const option = std::ranges::find(optionTable, name, &Option::name);
        if (option == optionTable.end()) {
            break;
        }
        if (option->value.empty() && value) {
            return std::unexpected(fmt::format("{} takes no value; {}", name, helpHint));
        }
        if (!option->value.empty() && !value && index + 1 < arguments.size()) {
            value = arguments[++index];
        }
        if (!option->value.empty() && value.value_or("").empty()) {
            return std::unexpected(fmt::format("{} needs {}", name, option->value));
        }
        // Of two devices, say, one would be left out without a word.
        if (!option->value.empty() && !given.insert(option->name).second) {
            return std::unexpected(fmt::format("{} is given twice", option->name));
        }
        option->take(options, value.value_or(""));
    }
    const auto rest = arguments.begin() + static_cast<ptrdiff_t>(std::min(index, arguments.size()));
    if (rest != arguments.end() && rest->starts_with("--")) {
        return std::unexpected(fmt::format("unknown option {}; {}", *rest, helpHint));
    }
    // Behind the switch nobody would look at them: a dry run would be a cleanup.
    const auto behind = rest == arguments.end() ? rest : rest + 1;
    if (const auto late = std::find_if(behind, arguments.end(), looksLikeOption); late != arguments.end()) {
        const bool isKnown =
            std::ranges::find(optionTable, halves(*late).first, &Option::name) != optionTable.end();
        return std::unexpected(isKnown
                                   ? fmt::format("{} belongs in front of the switch: {}", *late, synopsis)
                                   : fmt::format("{} behind {} means nothing; {}", *late, *rest, helpHint));
    }
    options.vector.emplace_back(arguments.empty() ? "ozvarine" : arguments.front());
    options.vector.insert(options.vector.end(), rest, arguments.end());
    return options;
}

LauncherOptions::Purpose LauncherOptions::purpose() const {
    if (vector.size() < 2) {
        return Purpose::show;
    }
    const std::string& option = vector[1];
    if (option == "-clean") {
        return dryRun == Analyze::yes ? Purpose::analyze : Purpose::change;
    }
    return option == "-cli" || option == "-restore-togglable-items" ? Purpose::change : Purpose::tell;
}

std::string LauncherOptions::help() {
    return fmt::format("usage: {}\n", synopsis) +
           "\n"
           "Cleans the file tree of a jailbroken iOS device.\n"
           "\n"
           "Options:\n"
           "  --device DIR       the device: a file tree whose top is the device's \"/\", or a device "
           "folder\n"
           "                     (default: the environment's OZVARINE_DEVICE)\n"
           "  --dry-run          -clean only analyses: nothing is deleted, renamed, restarted or restored.\n"
           "                     Like every run it writes the log, closes Cydia and iFile, and takes three\n"
           "                     stale keys out of one application's preference file\n"
           "  --log FILE         writes the log of the run to FILE, too; - is standard output\n"
           "  --strict           -clean ends with status 1 when items stayed that should have gone\n"
           "  --reset-settings   puts settings that cannot be read aside and goes on with the defaults\n"
           "  --ios VERSION      the device's version, where its tree does not tell it\n"
           "  --model MODEL      the device's hardware model, such as iPhone7,2, where its tree does not "
           "tell\n"
           "                     it\n"
           "  --version          prints the version\n"
           "  -h, --help         prints this text\n"
           "\n"
           "Switches:\n"
           "  -clean                 runs the enabled cleanup steps\n"
           "    -printresults        ... and prints a record for scripts\n"
           "    -respring            ... and restarts the home screen\n"
           "    -autorespring        ... and restarts the home screen if the step for caches or the one for\n"
           "                         temporary files is enabled, whatever they found\n"
           "  -cli                   shows a menu on the terminal\n"
           "  -respring              rebuilds the icon cache and restarts the home screen\n"
           "  -restore-togglable-items\n"
           "                         enables all add-ons, preference bundles and launch daemons again\n"
           "  -printsettings         prints the language and the plug-ins of the home screen, for scripts\n"
           "\n"
           "Exit status: 0 done; 1 not done, or not all of it (the line on standard error says why); 73 the\n"
           "device's tree cannot be written.\n"
           "\n"
           "The log of the last run is var/mobile/Library/Ozvarine/junk.txt in the device's tree.\n";
}

std::string LauncherOptions::version() {
    return fmt::format("ozvarine {}\n", OZVARINE_VERSION);
}
