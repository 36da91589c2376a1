#include "Commands.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace standins {
namespace {

constexpr int commandNotFound = 127;
constexpr int commandNotRun = 126;
constexpr std::string_view toolFolders[] = {"/usr/bin", "/bin", "/usr/sbin", "/sbin"};

platform::Descriptor openCommand(const ozdevice::DeviceFiles& device, const std::string& command) {
    if (command.find('/') != std::string::npos) {
        return command.starts_with('/') ? device.openTool(command) : platform::Descriptor();
    }
    for (const std::string_view folder : toolFolders) {
        if (auto file = device.openTool(std::string(folder) + '/' + command)) {
            return file;
        }
    }
    return {};
}

int execute(int file, std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    // A script is opened once more by its interpreter, through the descriptor.
    ::fcntl(file, F_SETFD, 0);
    ::fexecve(file, arguments.data(), environ);
    std::cerr << "su: " << words.front() << ": " << std::strerror(errno) << '\n';
    return commandNotRun;
}

} // namespace

int su(const ozdevice::DeviceFiles& device, Arguments arguments) {
    std::vector<std::string> words;
    for (size_t index = 0; index + 1 < arguments.size(); ++index) {
        if (arguments[index] == "-c") {
            std::istringstream text(arguments[index + 1]);
            for (std::string word; text >> word;) {
                words.push_back(word);
            }
            break;
        }
    }
    if (words.empty()) {
        std::cerr << "su: the device has no shell; give a command with -c\n";
        return 1;
    }
    const platform::Descriptor file = openCommand(device, words.front());
    if (!file) {
        std::cerr << "su: " << words.front() << ": command not found among the device's tools\n";
        return commandNotFound;
    }
    return execute(file.get(), std::move(words));
}

} // namespace standins
