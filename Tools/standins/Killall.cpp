#include "Commands.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <map>

namespace standins {
namespace {

const std::map<std::string, int, std::less<>> signals = {
    {"HUP", SIGHUP}, {"INT", SIGINT}, {"QUIT", SIGQUIT}, {"KILL", SIGKILL}, {"TERM", SIGTERM},
};

/// The signal of an option such as "-9" or "-KILL"; -1 for none.
int signalOf(std::string_view option) {
    option.remove_prefix(1);
    const bool isNumber = !option.empty() && option.find_first_not_of("0123456789") == std::string_view::npos;
    if (isNumber && option.size() <= 2) {
        return std::stoi(std::string(option));
    }
    option.remove_prefix(option.starts_with("SIG") ? 3 : 0);
    const auto found = signals.find(option);
    return found == signals.end() ? -1 : found->second;
}

} // namespace

int killall(const ozdevice::DeviceFiles& device, Arguments arguments) {
    int signal = SIGTERM;
    while (!arguments.empty() && arguments.front().starts_with('-')) {
        signal = signalOf(arguments.front());
        if (signal < 0) {
            std::cerr << "killall: unknown signal " << arguments.front() << '\n';
            return 1;
        }
        arguments = arguments.subspan(1);
    }
    if (arguments.empty()) {
        std::cerr << "usage: killall [-SIGNAL] NAME…\n";
        return 1;
    }
    std::vector<std::string> processes = device.processes();
    // A running daemon takes signal 1 as the wish to read its settings anew.
    const bool ends = signal != 0 && signal != SIGHUP;
    bool anyMatched = false;
    for (const std::string& name : arguments) {
        const bool matched = std::ranges::find(processes, name) != processes.end();
        anyMatched |= matched;
        if (!matched) {
            std::cerr << "No matching processes belonging to you were found: " << name << '\n';
        } else if (ends) {
            std::erase(processes, name);
        }
    }
    if (ends && anyMatched) {
        device.setProcesses(processes);
    }
    return anyMatched ? 0 : 1;
}

} // namespace standins
