#include "Description.h"

#include "DeviceFiles.h"
#include "Platform/Device/Device.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace ozdevice {
namespace {

namespace fs = std::filesystem;

struct Counts {
    size_t files = 0;
    size_t folders = 0;
    size_t links = 0;
    size_t applications = 0;
    uintmax_t bytes = 0;
};

Counts count(const fs::path& root) {
    Counts counts;
    std::error_code ignored;
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(root, options, ignored), end; entry != end;
         entry.increment(ignored)) {
        if (entry->is_symlink(ignored)) {
            ++counts.links;
        } else if (entry->is_directory(ignored)) {
            ++counts.folders;
            counts.applications +=
                entry->path().extension() == ".app" && fs::exists(entry->path() / "Info.plist", ignored);
        } else {
            ++counts.files;
            counts.bytes += entry->is_regular_file(ignored) ? entry->file_size(ignored) : 0;
        }
    }
    return counts;
}

std::string countPackages(platform::FileManager fileManager) {
    const auto content = fileManager.contentsAtPath("/var/lib/dpkg/status");
    if (!content && !platform::meansAbsence(content.error())) {
        return fmt::format("unknown ({})", content.error().message());
    }
    std::istringstream status(content.value_or(""));
    size_t installed = 0;
    for (std::string line; std::getline(status, line);) {
        installed += line.starts_with("Status: ") && line.ends_with(" installed");
    }
    return std::to_string(installed);
}

std::vector<std::string> toolPaths(const fs::path& tools) {
    std::vector<std::string> paths;
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tools, ignored)) {
        if (entry.is_regular_file(ignored)) {
            paths.push_back("/" + entry.path().lexically_relative(tools).string());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

std::string orUnknown(const std::string& text) {
    return text.empty() ? "unknown" : text;
}

std::string numberText(double number) {
    return number == 0 ? "unknown" : fmt::format("{:.2f}", number);
}

/// Something that only a device has: any other folder would be counted for long, and in vain.
bool looksLikeDevice(const platform::Device& device) {
    return !device.facts().systemVersion.empty() || device.fileManager().fileExistsAtPath("/var/mobile");
}

} // namespace

std::expected<Description, std::string> describeDevice(const std::string& directory) {
    const auto opened = platform::Device::open(directory);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    const platform::Device& device = **opened;
    const fs::path folder(directory);
    const bool isPlainTree = !platform::Device::isDeviceFolder(directory);
    if (isPlainTree && !looksLikeDevice(device)) {
        return std::unexpected(
            fmt::format("{} is no device: it has neither {} nor var/mobile or a version in "
                        "System/Library/CoreServices/SystemVersion.plist",
                        directory, rootFolderName));
    }
    const Counts counts = count(isPlainTree ? folder : folder / rootFolderName);
    const platform::DeviceFacts& facts = device.facts();
    // A text of the tree that is no version could be anything.
    const bool tellsVersion = platform::versionNumbers(facts.systemVersion).has_value();
    return Description{
        {"product version", tellsVersion ? facts.systemVersion : "unknown"},
        {"foundation version", numberText(facts.foundationVersion)},
        {"core foundation version", numberText(facts.coreFoundationVersion)},
        {"model", orUnknown(facts.hardwareModel)},
        {"time zone", facts.timeZone.value_or("unknown")},
        {"applications", std::to_string(counts.applications)},
        {"packages", countPackages(device.fileManager())},
        {"files", std::to_string(counts.files)},
        {"folders", std::to_string(counts.folders)},
        {"links", std::to_string(counts.links)},
        {"bytes", std::to_string(counts.bytes)},
        {"tools", isPlainTree ? "" : fmt::format("{}", fmt::join(toolPaths(folder / toolsFolderName), " "))},
    };
}

} // namespace ozdevice
