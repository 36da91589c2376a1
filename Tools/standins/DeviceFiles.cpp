#include "DeviceFiles.h"

#include "Platform/Formats/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ozdevice {
namespace {

using platform::Descriptor;

constexpr std::string_view plainCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:=@%+,";

constexpr const char* runningKey = "Running";
constexpr const char* disabledKey = "Disabled";

std::string readAll(int file) {
    std::string content;
    char buffer[16384];
    for (ssize_t count; (count = ::read(file, buffer, sizeof buffer)) > 0;) {
        content.append(buffer, static_cast<size_t>(count));
    }
    return content;
}

std::string quoted(const std::string& argument) {
    if (!argument.empty() && argument.find_first_not_of(plainCharacters) == std::string::npos) {
        return argument;
    }
    std::string text = "'";
    for (const char character : argument) {
        if (character == '\'') {
            text += "'\\''";
        } else {
            text += static_cast<unsigned char>(character) < ' ' ? '?' : character;
        }
    }
    return text + "'";
}

std::map<std::string, bool, std::less<>> booleans(const platform::Dictionary& dictionary, const char* key) {
    std::map<std::string, bool, std::less<>> result;
    if (const auto* values = platform::valueAt<platform::Dictionary>(dictionary, key)) {
        for (const auto& [label, value] : *values) {
            if (const bool* flag = value.as<bool>()) {
                result.emplace(label, *flag);
            }
        }
    }
    return result;
}

platform::Dictionary dictionaryOf(const std::map<std::string, bool, std::less<>>& flags) {
    return {flags.begin(), flags.end()};
}

} // namespace

std::string journalLine(const std::vector<std::string>& commandLine) {
    std::string line;
    for (const std::string& argument : commandLine) {
        line += (line.empty() ? "" : " ") + quoted(argument);
    }
    return line + '\n';
}

std::expected<DeviceFiles, std::string> DeviceFiles::open(const std::string& directory) {
    Descriptor folder(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        return std::unexpected("cannot open the device folder " + directory + ": " + std::strerror(errno));
    }
    if (::faccessat(folder.get(), factsFileName, F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::unexpected(directory + " is no device folder: it has no " + factsFileName);
    }
    while (::flock(folder.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return DeviceFiles(std::move(folder));
}

void DeviceFiles::appendToJournal(const std::vector<std::string>& commandLine) const {
    const Descriptor journal(::openat(_folder.get(), journalFileName,
                                      O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644));
    const std::string line = journalLine(commandLine);
    std::ignore = ::write(journal.get(), line.data(), line.size());
}

std::string DeviceFiles::read(const char* name) const {
    const Descriptor file(::openat(_folder.get(), name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    return file ? readAll(file.get()) : "";
}

void DeviceFiles::write(const char* name, std::string_view content) const {
    const std::string temporary = std::string(".") + name + ".new";
    const Descriptor file(::openat(_folder.get(), temporary.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!file) {
        return;
    }
    if (::write(file.get(), content.data(), content.size()) == static_cast<ssize_t>(content.size())) {
        ::renameat(_folder.get(), temporary.c_str(), _folder.get(), name);
    } else {
        ::unlinkat(_folder.get(), temporary.c_str(), 0);
    }
}

std::vector<std::string> DeviceFiles::processes() const {
    std::vector<std::string> names;
    const auto value = platform::parsePropertyList(read(processesFileName));
    const auto* array = value ? value->as<platform::Array>() : nullptr;
    for (const platform::Value& name : array ? *array : platform::Array()) {
        if (const auto* text = name.as<std::string>()) {
            names.push_back(*text);
        }
    }
    return names;
}

void DeviceFiles::setProcesses(const std::vector<std::string>& names) const {
    write(processesFileName, serializePropertyList(platform::Array(names.begin(), names.end()),
                                                   platform::PropertyListFormat::xml));
}

LaunchServices DeviceFiles::launchServices() const {
    const auto value = platform::parsePropertyList(read(launchServicesFileName));
    const auto* dictionary = value ? value->as<platform::Dictionary>() : nullptr;
    return dictionary ? LaunchServices{booleans(*dictionary, runningKey), booleans(*dictionary, disabledKey)}
                      : LaunchServices{};
}

void DeviceFiles::setLaunchServices(const LaunchServices& services) const {
    const platform::Dictionary dictionary{{runningKey, dictionaryOf(services.running)},
                                          {disabledKey, dictionaryOf(services.disabled)}};
    write(launchServicesFileName, serializePropertyList(dictionary, platform::PropertyListFormat::xml));
}

std::optional<std::string> DeviceFiles::readInTree(std::string_view devicePath) const {
    const Descriptor file = openBelow(rootFolderName, devicePath);
    return file ? std::optional(readAll(file.get())) : std::nullopt;
}

Descriptor DeviceFiles::openTool(std::string_view devicePath) const {
    return openBelow(toolsFolderName, devicePath);
}

Descriptor DeviceFiles::openBelow(const char* top, std::string_view devicePath) const {
    Descriptor folder(::openat(_folder.get(), top, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    while (folder) {
        devicePath.remove_prefix(std::min(devicePath.find_first_not_of('/'), devicePath.size()));
        const size_t end = std::min(devicePath.find('/'), devicePath.size());
        const std::string name(devicePath.substr(0, end));
        const bool isLast = end == devicePath.size();
        if (name.empty() || name == "." || name == "..") {
            return {};
        }
        const int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | (isLast ? O_NONBLOCK : O_DIRECTORY);
        folder = Descriptor(::openat(folder.get(), name.c_str(), flags));
        if (isLast) {
            break;
        }
        devicePath.remove_prefix(end);
    }
    return folder;
}

} // namespace ozdevice
