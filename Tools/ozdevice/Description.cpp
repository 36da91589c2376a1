#include "Description.h"

#include "DeviceFiles.h"
#include "Platform/PropertyList.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace ozdevice {
namespace {

namespace fs = std::filesystem;

constexpr const char* containerMetadata = ".com.apple.mobile_container_manager.metadata.plist";

struct Counts {
    size_t files = 0;
    size_t folders = 0;
    size_t links = 0;
    size_t applications = 0;
    uintmax_t bytes = 0;
};

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

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

size_t countPackages(const fs::path& root) {
    std::istringstream status(readFile(root / "private/var/lib/dpkg/status"));
    size_t installed = 0;
    for (std::string line; std::getline(status, line);) {
        installed += line.starts_with("Status: ") && line.ends_with(" installed");
    }
    return installed;
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

std::string textOf(const platform::Dictionary& facts, std::string_view key) {
    const auto found = facts.find(key);
    if (found == facts.end()) {
        return "unknown";
    }
    if (const auto* text = found->second.as<std::string>()) {
        return *text;
    }
    const auto number = found->second.doubleValue();
    return number ? fmt::format("{:.2f}", *number) : "unknown";
}

} // namespace

std::expected<Description, std::string> describeDevice(const std::string& directory) {
    const fs::path folder(directory);
    std::error_code error;
    if (!fs::is_directory(folder / rootFolderName, error)) {
        return std::unexpected(
            fmt::format("{} is no device folder: it has no {}", directory, rootFolderName));
    }
    const auto parsed = platform::parsePropertyList(readFile(folder / factsFileName));
    const auto* facts = parsed ? parsed->as<platform::Dictionary>() : nullptr;
    if (!facts) {
        return std::unexpected(
            fmt::format("{} is missing or no property list", (folder / factsFileName).string()));
    }
    const Counts counts = count(folder / rootFolderName);
    return Description{
        {"product version", textOf(*facts, "SystemVersion")},
        {"foundation version", textOf(*facts, "FoundationVersion")},
        {"core foundation version", textOf(*facts, "CoreFoundationVersion")},
        {"model", textOf(*facts, "HardwareModel")},
        {"time zone", textOf(*facts, "TimeZone")},
        {"applications", std::to_string(counts.applications)},
        {"packages", std::to_string(countPackages(folder / rootFolderName))},
        {"files", std::to_string(counts.files)},
        {"folders", std::to_string(counts.folders)},
        {"links", std::to_string(counts.links)},
        {"bytes", std::to_string(counts.bytes)},
        {"tools", fmt::format("{}", fmt::join(toolPaths(folder / toolsFolderName), " "))},
    };
}

} // namespace ozdevice
