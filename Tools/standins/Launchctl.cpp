#include "Commands.h"
#include "Platform/Formats/PropertyList.h"

#include <iostream>
#include <optional>

namespace standins {
namespace {

using ozdevice::DeviceFiles;
using ozdevice::LaunchServices;

constexpr int noSuchService = 113;

// The label of a service target such as "system/com.apple.printd".
std::string labelOf(const std::string& target) {
    return target.substr(target.rfind('/') + 1);
}

std::optional<std::string> labelOfPropertyList(const DeviceFiles& device, const std::string& path) {
    // On a device "/var" is a link into "/private".
    const auto content = device.readInTree(path.starts_with("/var/") ? "/private" + path : path);
    const auto value = platform::parsePropertyList(content.value_or(""));
    const auto* dictionary = value ? value->as<platform::Dictionary>() : nullptr;
    const auto* label = dictionary ? platform::valueAt<std::string>(*dictionary, "Label") : nullptr;
    return label ? std::optional(*label) : std::nullopt;
}

enum class Loading { load, unload };

int loadOrUnload(const DeviceFiles& device, Arguments arguments, Loading loading) {
    LaunchServices services = device.launchServices();
    bool overrides = false;
    int status = 0;
    for (const std::string& argument : arguments) {
        if (argument.starts_with('-')) {
            overrides |= argument.find('w') != std::string::npos;
            continue;
        }
        const auto label = labelOfPropertyList(device, argument);
        if (!label) {
            std::cerr << argument << ": No such file or directory, or no property list of a service\n";
            status = 1;
            continue;
        }
        if (overrides) {
            services.disabled[*label] = loading == Loading::unload;
        }
        if (loading == Loading::unload) {
            services.running.erase(*label);
        } else {
            const auto disabled = services.disabled.find(*label);
            if (disabled == services.disabled.end() || !disabled->second) {
                services.running[*label] = true;
            }
        }
    }
    device.setLaunchServices(services);
    return status;
}

int load(const DeviceFiles& device, Arguments arguments) {
    return loadOrUnload(device, arguments, Loading::load);
}

int unload(const DeviceFiles& device, Arguments arguments) {
    return loadOrUnload(device, arguments, Loading::unload);
}

int setDisabled(const DeviceFiles& device, Arguments arguments, bool disabled) {
    if (arguments.empty()) {
        std::cerr << "Usage: launchctl " << (disabled ? "disable" : "enable") << " <service-target>\n";
        return 64;
    }
    LaunchServices services = device.launchServices();
    services.disabled[labelOf(arguments.front())] = disabled;
    device.setLaunchServices(services);
    return 0;
}

int disable(const DeviceFiles& device, Arguments arguments) {
    return setDisabled(device, arguments, true);
}

int enable(const DeviceFiles& device, Arguments arguments) {
    return setDisabled(device, arguments, false);
}

int setRunning(const DeviceFiles& device, Arguments arguments, bool running) {
    while (!arguments.empty() && arguments.front().starts_with('-')) {
        arguments = arguments.subspan(1);
    }
    LaunchServices services = device.launchServices();
    const auto service =
        arguments.empty() ? services.running.end() : services.running.find(labelOf(arguments.front()));
    if (service == services.running.end()) {
        std::cerr << "Could not find service" << (arguments.empty() ? "" : " \"" + arguments.front() + "\"")
                  << '\n';
        return noSuchService;
    }
    service->second = running;
    device.setLaunchServices(services);
    return 0;
}

int start(const DeviceFiles& device, Arguments arguments) {
    return setRunning(device, arguments, true);
}

int stop(const DeviceFiles& device, Arguments arguments) {
    return setRunning(device, arguments, false);
}

int printDisabled(const DeviceFiles& device, Arguments) {
    std::cout << "disabled services = {\n";
    for (const auto& [label, disabled] : device.launchServices().disabled) {
        std::cout << "\t\"" << label << "\" => " << (disabled ? "true" : "false") << '\n';
    }
    std::cout << "}\nlogin item associations = {\n}\n";
    return 0;
}

int list(const DeviceFiles& device, Arguments arguments) {
    const LaunchServices services = device.launchServices();
    if (!arguments.empty()) {
        const auto found = services.running.find(arguments.front());
        if (found == services.running.end()) {
            std::cerr << "Could not find service \"" << arguments.front() << "\"\n";
            return noSuchService;
        }
        std::cout << "{\n\t\"Label\" = \"" << found->first << "\";\n};\n";
        return 0;
    }
    std::cout << "PID\tStatus\tLabel\n";
    int identifier = 40;
    for (const auto& [label, running] : services.running) {
        ++identifier;
        std::cout << (running ? std::to_string(identifier) : "-") << "\t0\t" << label << '\n';
    }
    return 0;
}

struct Subcommand {
    std::string_view name;
    int (*run)(const DeviceFiles& device, Arguments arguments);
};

constexpr Subcommand subcommands[] = {
    {"disable", disable}, {"enable", enable}, {"kickstart", start},
    {"list", list},       {"load", load},     {"print-disabled", printDisabled},
    {"start", start},     {"stop", stop},     {"unload", unload},
};

} // namespace

int launchctl(const DeviceFiles& device, Arguments arguments) {
    for (const Subcommand& subcommand : subcommands) {
        if (!arguments.empty() && arguments.front() == subcommand.name) {
            return subcommand.run(device, arguments.subspan(1));
        }
    }
    std::cerr << "Unrecognized subcommand: " << (arguments.empty() ? "none given" : arguments.front())
              << '\n';
    return 64;
}

} // namespace standins
