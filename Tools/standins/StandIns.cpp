#include "StandIns.h"

#include "Commands.h"

#include <iostream>

namespace standins {
namespace {

struct Tool {
    std::string_view name;
    int (*run)(const ozdevice::DeviceFiles& device, Arguments arguments);
};

int noteOnly(const ozdevice::DeviceFiles&, Arguments) {
    return 0;
}

constexpr Tool tools[] = {
    {"killall", killall}, {"launchctl", launchctl}, {"reboot", noteOnly}, {"su", su}, {"uicache", noteOnly},
};

} // namespace

int run(const std::string& deviceFolder, const std::vector<std::string>& arguments) {
    const std::string name = arguments.empty() ? "" : arguments[0].substr(arguments[0].rfind('/') + 1);
    for (const Tool& tool : tools) {
        if (tool.name != name) {
            continue;
        }
        const auto device = ozdevice::DeviceFiles::open(deviceFolder);
        if (!device) {
            std::cerr << name << ": " << device.error() << '\n';
            return 1;
        }
        std::vector<std::string> commandLine = arguments;
        commandLine[0] = name;
        device->appendToJournal(commandLine);
        return tool.run(*device, Arguments(arguments).subspan(1));
    }
    std::cerr << "\"" << name << "\" is none of the device's tools; call this program by the name of one\n";
    return 127;
}

} // namespace standins
