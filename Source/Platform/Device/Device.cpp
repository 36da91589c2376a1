#include "Platform/Device/Device.h"

#include "Platform/Device/DeviceNames.h"
#include "Platform/Device/HostRoot.h"
#include "Platform/Formats/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/stat.h>

namespace platform {

namespace {

// Two cores and more run it; more threads than tools that are waited for would only sleep.
constexpr size_t toolThreads = 2;

// What is left to the background is bound by the file system, which a few threads keep busy. The main thread
// is one more.
size_t backgroundThreads() {
    return std::clamp<size_t>(std::thread::hardware_concurrency(), 2, 4) - 1;
}

void sleepForReal(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

bool isFolder(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Whatever it is, or leads to.
bool isThere(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
}

std::string realPath(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) {
        return path;
    }
    std::string result(resolved);
    ::free(resolved); // NOLINT: realpath allocates this way
    return result;
}

std::string explain(const std::string& directory, const std::error_code& error) {
    switch (error.value()) {
    case ENOENT:
        return fmt::format("there is no folder {}; name a device's file tree or a device folder", directory);
    case ENOTDIR:
        return fmt::format("{} is not a folder; name a device's file tree or a device folder", directory);
    case EACCES:
    case EPERM:
        return fmt::format("{} may not be read by this user; change its permissions or run as root",
                           directory);
    default:
        return fmt::format("{} cannot be opened: {}", directory, error.message());
    }
}

std::expected<Dictionary, std::string> readDeviceDictionary(const std::string& path) {
    if (!isThere(path)) {
        return Dictionary{};
    }
    struct stat status = {};
    if (::stat(path.c_str(), &status) < 0 && errno == ENOENT) {
        return std::unexpected(fmt::format("{} is a link that leads nowhere; repair or remove it", path));
    }
    // Whoever opens a pipe waits for somebody to write into it.
    if (status.st_mode != 0 && !S_ISREG(status.st_mode)) {
        return std::unexpected(fmt::format("{} is no regular file; remove it", path));
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::unexpected(fmt::format("{} cannot be read; change its permissions", path));
    }
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    auto parsed = parsePropertyList(content);
    const auto* dictionary = parsed ? parsed->as<Dictionary>() : nullptr;
    if (dictionary == nullptr) {
        return std::unexpected(
            fmt::format("{} is not a property list with a dictionary; repair it or remove it", path));
    }
    return *dictionary;
}

} // namespace

Device::Device(FileManager fileManager, DeviceFacts facts, ToolTable tools)
    : _fileManager(std::move(fileManager))
    , _facts(std::move(facts))
    , _tools(std::move(tools))
    , _volumes(_fileManager, _facts.volumes)
    , _standardUserDefaults(_fileManager, _notificationCenter, _warnings,
                            std::string(devicename::programPreferences))
    , _sleep(sleepForReal)
    , _highPriorityQueue(Queue::concurrent("high", toolThreads))
    , _backgroundQueue(Queue::concurrent("background", backgroundThreads())) {}

Device::~Device() = default;

Result<void> Device::lock() {
    auto taken = DeviceLock::take(_fileManager.rootDescriptor());
    if (!taken) {
        return std::unexpected(taken.error());
    }
    _lock = std::move(*taken);
    return {};
}

bool Device::isDeviceFolder(const std::string& directory) {
    return isFolder(directory + "/Root") &&
           (isThere(directory + "/Device.plist") || isFolder(directory + "/Tools"));
}

std::expected<std::unique_ptr<Device>, std::string> Device::open(const std::string& directory,
                                                                 const GivenFacts& given) {
    // A folder that cannot be entered looks like one without a tree inside; say what is wrong with the
    // folder.
    if (auto opened = FileManager::atRoot(directory); !opened) {
        return std::unexpected(explain(directory, opened.error()));
    }
    const bool isFolderWithFacts = isDeviceFolder(directory);
    if (isThere(directory + "/Device.plist") && !isThere(directory + "/Root")) {
        return std::unexpected(
            fmt::format("{} has a Device.plist and no folder Root with the device's tree; put "
                        "the tree there, or name its own folder",
                        directory));
    }
    const std::string rootDirectory = realPath(isFolderWithFacts ? directory + "/Root" : directory);
    auto root = FileManager::atRoot(rootDirectory);
    if (!root) {
        return std::unexpected(explain(rootDirectory, root.error()));
    }
    if (isHostRoot(root->rootDescriptor())) {
        return std::unexpected(fmt::format(
            "{} is this machine's own root, which is never a device; name a device's tree", directory));
    }
    auto dictionary = isFolderWithFacts ? readDeviceDictionary(directory + "/Device.plist") : Dictionary{};
    if (!dictionary) {
        return std::unexpected(dictionary.error());
    }
    auto facts = DeviceFacts::read(*dictionary, *root, given);
    const auto toolsDirectory =
        isFolderWithFacts ? std::optional(realPath(directory) + "/Tools") : std::optional<std::string>{};
    return std::make_unique<Device>(std::move(*root), std::move(facts),
                                    ToolTable(toolsDirectory, realPath(directory), rootDirectory));
}

} // namespace platform
