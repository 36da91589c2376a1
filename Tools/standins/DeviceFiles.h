#pragma once

#include "Platform/Files/Descriptor.h"

#include <expected>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The files of a device folder that stand beside its tree and that the stand-in tools live on.
namespace ozdevice {

inline constexpr const char* rootFolderName = "Root";
inline constexpr const char* factsFileName = "Device.plist";
inline constexpr const char* toolsFolderName = "Tools";
inline constexpr const char* journalFileName = "Journal.log";
inline constexpr const char* processesFileName = "Processes.plist";
inline constexpr const char* launchServicesFileName = "LaunchServices.plist";

/// What the service manager knows.
struct LaunchServices {
    /// By label: whether the service runs. A label that is missing here is not loaded.
    std::map<std::string, bool, std::less<>> running;
    /// By label: whether the service is disabled, as a user or a tool chose; it outlives a restart.
    std::map<std::string, bool, std::less<>> disabled;
};

/// Exclusive use of a device folder's state among processes, from creation to destruction. Missing or
/// malformed files read as empty; a file is written anew beside the old one and takes its place.
class DeviceFiles {
  public:
    /// The error is one line for the user.
    static std::expected<DeviceFiles, std::string> open(const std::string& directory);

    /// Appends one line in a single write, so that lines of concurrent tools stay whole.
    void appendToJournal(const std::vector<std::string>& commandLine) const;

    /// Names of the running processes.
    [[nodiscard]] std::vector<std::string> processes() const;
    void setProcesses(const std::vector<std::string>& names) const;
    [[nodiscard]] LaunchServices launchServices() const;
    void setLaunchServices(const LaunchServices& services) const;

    /// A file's content in the device's tree; none if there is no such file.
    [[nodiscard]] std::optional<std::string> readInTree(std::string_view devicePath) const;
    /// A descriptor of a program among the device's tools, none if there is no such file. For this and the
    /// one above, neither a link nor ".." is followed, so that nothing beyond the device folder can be
    /// reached.
    [[nodiscard]] platform::Descriptor openTool(std::string_view devicePath) const;

  private:
    explicit DeviceFiles(platform::Descriptor folder)
        : _folder(std::move(folder)) {}
    void write(const char* name, std::string_view content) const;
    [[nodiscard]] std::string read(const char* name) const;
    [[nodiscard]] platform::Descriptor openBelow(const char* top, std::string_view devicePath) const;

    platform::Descriptor _folder;
};

/// The arguments as one line that a shell would read back; control characters become "?".
std::string journalLine(const std::vector<std::string>& commandLine);

} // namespace ozdevice
