#include "CommandLine.h"

#include "Description.h"
#include "Maker.h"
#include "Model/Apps/AppReport.h"
#include "Platform/Device/Device.h"

#include <charconv>
#include <iostream>
#include <optional>
#include <span>

#include <fmt/format.h>

namespace ozdevice {
namespace {

using Arguments = std::span<const std::string>;

constexpr std::string_view usage =
    R"(Usage: ozdevice create DIR [--ios VERSION] [--model NAME] [--files N] [--seed S]
                       [--architecture NAME]
       ozdevice info DIR

create  makes a device folder in DIR, which must be missing or empty
info    prints what a device folder or a device's plain file tree holds, and its applications
        with their containers

  --ios VERSION        version of the system, 4 to 11, such as 9 or 9.3.5 (default 11.1.2)
  --model NAME         hardware model, such as iPhone9,3 (default: usual for the version)
  --files N            number of caches, logs and temporary files to add (default 1500)
  --seed S             number that the made-up values are drawn from (default 1)
  --architecture NAME  architecture of the packages, such as all (default iphoneos-arm)
)";

constexpr int failed = 1;
constexpr int wrongUsage = 2;

int complain(std::string_view message, int status) {
    std::cerr << "ozdevice: " << message << '\n';
    return status;
}

template <class Number>
bool readNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end;
}

/// Empty if the option was taken, otherwise what is wrong with it.
std::string takeOption(DeviceOptions& options, const std::string& name, const std::string& value) {
    if (name == "--ios") {
        options.productVersion = value;
    } else if (name == "--model") {
        options.model = value;
    } else if (name == "--architecture") {
        options.packageArchitecture = value;
    } else if (name == "--files") {
        return readNumber(value, options.junkFileCount) ? "" : "--files takes a number";
    } else if (name == "--seed") {
        return readNumber(value, options.seed) ? "" : "--seed takes a number";
    } else {
        return fmt::format("unknown option {}; see ozdevice --help", name);
    }
    return {};
}

int create(Arguments arguments) {
    DeviceOptions options;
    std::optional<std::string> directory;
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (!argument.starts_with("--")) {
            if (directory) {
                return complain("create takes one directory; see ozdevice --help", wrongUsage);
            }
            directory = argument;
            continue;
        }
        if (index + 1 == arguments.size()) {
            return complain(fmt::format("{} needs a value; see ozdevice --help", argument), wrongUsage);
        }
        if (const std::string error = takeOption(options, argument, arguments[++index]); !error.empty()) {
            return complain(error, wrongUsage);
        }
    }
    if (!directory || directory->empty()) {
        return complain("create needs a directory; see ozdevice --help", wrongUsage);
    }
    const auto created = createDevice(*directory, options);
    return created ? 0 : complain(created.error(), failed);
}

int info(Arguments arguments) {
    if (arguments.size() != 1) {
        return complain("info takes one directory; see ozdevice --help", wrongUsage);
    }
    const auto description = describeDevice(arguments.front());
    if (!description) {
        return complain(description.error(), failed);
    }
    for (const auto& [key, value] : *description) {
        std::cout << key << ": " << value << '\n';
    }
    const auto device = platform::Device::open(arguments.front());
    if (!device) {
        return complain(device.error(), failed);
    }
    std::cout << describeApplications(**device);
    return 0;
}

} // namespace

int runCommandLine(const std::vector<std::string>& arguments) {
    const std::string command = arguments.empty() ? "" : arguments.front();
    const Arguments rest = Arguments(arguments).subspan(arguments.empty() ? 0 : 1);
    if (command == "create") {
        return create(rest);
    }
    if (command == "info") {
        return info(rest);
    }
    const bool asked = command == "--help" || command == "-h";
    (asked ? std::cout : std::cerr) << usage;
    return asked ? 0 : wrongUsage;
}

} // namespace ozdevice
