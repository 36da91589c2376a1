#pragma once

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/FileManager.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The process of the host that stands for one run of a device's tool.
struct Command {
    /// The host's path of the program.
    std::string path;
    /// Its vector, entry 0 included.
    std::vector<std::string> arguments;
    /// "NAME=value" each; they are the whole environment, or override the caller's.
    std::vector<std::string> environment;
    bool replacesEnvironment = false;
    /// What the process inherits, as its descriptors 3, 4 and so on. All numbers are at least 10 and close on
    /// execution, so they can be duplicated in any order.
    std::vector<Descriptor> descriptors;
};

/// What stands behind one device path.
class Tool {
  public:
    /// The command for a vector as the device would see it (entry 0 is the tool's name), on the tree whose
    /// handle is given. An error where a package tool's places in the tree may not be entered.
    [[nodiscard]] Result<Command> command(const std::vector<std::string>& arguments,
                                          FileManager fileManager) const;
    /// Whether it is a program of the device folder, not one of the host.
    [[nodiscard]] bool isStandIn() const { return _kind == Kind::standIn; }

  private:
    friend class ToolTable;

    enum class Kind { standIn, entered, packageQuery, packageManager, packageDownloader };

    [[nodiscard]] Result<void> enterTree(Command& command, const char* mode, const std::string& program,
                                         const std::vector<std::string>& arguments,
                                         FileManager& fileManager) const;
    [[nodiscard]] Result<void> guardTree(Command& command, const std::vector<std::string>& arguments,
                                         FileManager& fileManager) const;

    Kind _kind = Kind::standIn;
    /// The host's path of the program.
    std::string _program;
    /// The directory of this system's own helpers.
    std::string _helpers;
    std::string _deviceDirectory;
    std::string _rootDirectory;
};

/// The tools of a device, by device path. A program under the device folder's "Tools" at that very path comes
/// first; "find", "sed", "dpkg", "dpkg-query" and "apt-get" are the host's own, kept inside the device's
/// tree; nothing else exists, whatever the tree or the host hold.
class ToolTable {
  public:
    /// A table without any tool.
    ToolTable() = default;

    /// `toolsDirectory` is the host's path of the stand-in programs, laid out by device path; one that
    /// belongs to somebody else, or that others may write to, gives none. `deviceDirectory` is what stand-ins
    /// are told
    /// (`OZVARINE_DEVICE`), `rootDirectory` the host's absolute path of the device's tree.
    ToolTable(const std::optional<std::string>& toolsDirectory, std::string deviceDirectory,
              std::string rootDirectory);

    /// The tool at an absolute device path, or none.
    [[nodiscard]] std::optional<Tool> toolAt(std::string_view devicePath) const;
    [[nodiscard]] bool isExecutable(std::string_view devicePath) const {
        return toolAt(devicePath).has_value();
    }

    /// Where tools are looked for by name, in this order.
    static const std::vector<std::string_view>& searchDirectories();

  private:
    [[nodiscard]] std::optional<std::string> standInAt(std::string_view devicePath) const;
    [[nodiscard]] std::optional<Tool> hostToolAt(std::string_view devicePath) const;
    [[nodiscard]] bool hasStandInNamed(std::string_view name) const;

    /// The host's path of the trusted directory of stand-ins; empty without one.
    std::string _toolsDirectory;
    std::string _deviceDirectory;
    std::string _rootDirectory;
    std::string _helpers;
};

} // namespace platform
