#pragma once

#include "DeviceFiles.h"
#include "Generation.h"
#include "Platform/Formats/PropertyList.h"
#include "Random.h"
#include "TreeWriter.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ozdevice {

/// What kind of device to make.
struct DeviceOptions {
    std::string productVersion = "11.1.2";
    /// In the form of "hw.machine"; empty for a model that is usual for the version.
    std::string model;
    /// How many caches, logs and temporary files to add to what every device has.
    size_t junkFileCount = 1500;
    uint64_t seed = 1;
    /// Of all packages. The device's own is foreign to the package tools of a host, which then add it to
    /// names.
    std::string packageArchitecture = "iphoneos-arm";
};

constexpr int anyMajor = 99;
constexpr int anyAge = -1;

/// One row of the tables that describe a device's tree. The name tells the content (see contentForPath).
struct TreeEntry {
    /// A trailing slash makes it a folder.
    std::string_view path;
    /// Where a link leads; empty for all else.
    std::string_view target = {};
    /// Days before the device was made; `anyAge` leaves it to chance.
    int ageInDays = anyAge;
    /// The first and the last major version of the system that has the entry.
    int since = 0;
    int until = anyMajor;
    /// Permission bits; executable ones also make the content a program's.
    mode_t mode = 0644;
};

/// The device under construction, as every topic sees it.
class DeviceBuild {
  public:
    DeviceBuild(TreeWriter& tree, const Generation& generation, const DeviceOptions& options);

    TreeWriter& tree;
    const Generation& generation;
    const DeviceOptions& options;
    Random random;

    /// Adds the entries that the generation has. `base` is put before each path; "{id}" in a path is replaced
    /// by `identifier`.
    void add(std::span<const TreeEntry> entries, std::string_view base = {},
             std::string_view identifier = {});
    void add(std::string_view path, std::string_view content);
    /// Alternately binary and XML, as on a device.
    void add(std::string_view path, const platform::Dictionary& propertyList);
    /// Seconds, up to some months.
    int64_t someAge() { return static_cast<int64_t>(random.below(150 * 24 * 3600)); }

  private:
    void addEntry(const TreeEntry& entry, const std::string& path);

    bool _nextIsBinary = false;
};

// The topics, each with its tables in a file of its own.
void addSystemTree(DeviceBuild& build);
void addApplications(DeviceBuild& build);
void addMessages(DeviceBuild& build);
void addCaches(DeviceBuild& build);
void addLogs(DeviceBuild& build);
void addPackages(DeviceBuild& build, const std::string& stagingDirectory);
LaunchServices addDaemons(DeviceBuild& build);
std::vector<std::string> usualProcesses();
void addLanguages(DeviceBuild& build);
void addPreferences(DeviceBuild& build);
void addDictionaries(DeviceBuild& build);
void addJunk(DeviceBuild& build);

} // namespace ozdevice
