#include "Interface/Screens/Chooser/RecentDevices.h"

#include "Platform/Formats/PropertyList.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;
using platform::Dictionary;

namespace {

constexpr std::string_view devicesKey = "devices";
constexpr std::string_view folderKey = "folder";
constexpr std::string_view versionKey = "systemVersion";
constexpr std::string_view cleanupKey = "lastCleanup";

std::string textAt(const Dictionary& entry, std::string_view key) {
    const auto* text = platform::valueAt<std::string>(entry, key);
    return text == nullptr ? "" : *text;
}

} // namespace

std::string RecentDevices::defaultFile() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return fs::path(value == nullptr ? "" : value);
    };
    fs::path folder = variable("XDG_STATE_HOME");
    if (!folder.is_absolute()) {
        const fs::path home = variable("HOME");
        if (!home.is_absolute()) {
            return "";
        }
        folder = home / ".local/state";
    }
    return folder / "ozvarine/devices.plist";
}

std::vector<RecentDevice> RecentDevices::stored() const {
    std::ifstream file(_file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto value = platform::parsePropertyList(bytes);
    const auto* root = value ? value->as<Dictionary>() : nullptr;
    const auto* list = root == nullptr ? nullptr : platform::valueAt<platform::Array>(*root, devicesKey);
    std::vector<RecentDevice> devices;
    if (list == nullptr) {
        return devices;
    }
    for (const auto& item : *list) {
        if (const auto* entry = item.as<Dictionary>(); entry != nullptr) {
            const auto cleaned = entry->find(cleanupKey);
            devices.push_back(
                {.folder = textAt(*entry, folderKey),
                 .systemVersion = textAt(*entry, versionKey),
                 .lastCleanup = cleaned == entry->end()
                                    ? 0
                                    : static_cast<int64_t>(cleaned->second.unsignedValue().value_or(0))});
        }
    }
    return devices;
}

std::vector<RecentDevice> RecentDevices::devices() const {
    auto devices = stored();
    std::erase_if(devices, [](const RecentDevice& device) {
        std::error_code error;
        return device.folder.empty() || !fs::is_directory(device.folder, error);
    });
    return devices;
}

void RecentDevices::store(const std::vector<RecentDevice>& devices) const {
    if (_file.empty()) {
        return;
    }
    platform::Array list;
    for (const auto& device : devices) {
        list.emplace_back(Dictionary{{std::string(folderKey), device.folder},
                                     {std::string(versionKey), device.systemVersion},
                                     {std::string(cleanupKey), static_cast<uint64_t>(device.lastCleanup)}});
    }
    std::error_code error;
    fs::create_directories(fs::path(_file).parent_path(), error);
    // Another window may read at this moment: it sees the old list or the new one.
    const std::string temporary = _file + ".new";
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file << platform::serializePropertyList(Dictionary{{std::string(devicesKey), list}},
                                            platform::PropertyListFormat::xml);
    file.close();
    if (file) {
        fs::rename(temporary, _file, error);
    }
}

void RecentDevices::noteOpened(const std::string& folder, const std::string& systemVersion) const {
    auto devices = stored();
    const auto earlier = std::ranges::find(devices, folder, &RecentDevice::folder);
    RecentDevice opened{.folder = folder, .systemVersion = systemVersion};
    if (earlier != devices.end()) {
        opened.lastCleanup = earlier->lastCleanup;
        devices.erase(earlier);
    }
    devices.insert(devices.begin(), opened);
    devices.resize(std::min(devices.size(), mostKept));
    store(devices);
}

void RecentDevices::noteCleaned(const std::string& folder, int64_t time) const {
    auto devices = stored();
    const auto cleaned = std::ranges::find(devices, folder, &RecentDevice::folder);
    if (cleaned != devices.end()) {
        cleaned->lastCleanup = time;
        store(devices);
    }
}
