#include "Platform/Device/ToolTable.h"

#include "Platform/Device/DeviceNames.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <span>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::array hostDirectories = {"/usr/bin", "/bin", "/usr/sbin", "/sbin"};

// The package queries, which dpkg hands on to dpkg-query, and the helper's mode for each.
struct PackageQuery {
    std::string_view option;
    const char* mode;
};
constexpr std::array packageQueries = {
    PackageQuery{"-l", "list"},   PackageQuery{"--list", "list"},
    PackageQuery{"-S", "search"}, PackageQuery{"--search", "search"},
    PackageQuery{"-L", "enter"},  PackageQuery{"--listfiles", "enter"},
    PackageQuery{"-s", "enter"},  PackageQuery{"--status", "enter"},
    PackageQuery{"-p", "enter"},  PackageQuery{"--print-avail", "enter"},
};

// No time zone file and no locale is read, so nothing in the tree steers these; in the locale "C" names of
// any bytes match a pattern.
const std::vector<std::string> minimalEnvironment = {
    "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", "TZ=UTC0", "HOME=/", "DEBIAN_FRONTEND=noninteractive",
};

/// The absolute path without links, or none if nothing is there.
std::optional<std::string> realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

bool isProgram(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

/// True for what belongs to root or to this user and is open to nobody else for writing.
bool isOurs(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && !S_ISLNK(status.st_mode) &&
           (status.st_uid == 0 || status.st_uid == ::geteuid()) &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::string helpersDirectory() {
    const auto program = realPath("/proc/self/exe");
    if (!program) {
        return {};
    }
    return realPath(program->substr(0, program->rfind('/')) + "/../libexec").value_or("");
}

std::optional<std::string> hostProgram(std::string_view name) {
    for (const char* directory : hostDirectories) {
        const std::string path = std::string(directory) + "/" + std::string(name);
        if (isProgram(path)) {
            return realPath(path);
        }
    }
    return std::nullopt;
}

/// The package query that a vector asks for, or null.
const PackageQuery* packageQueryOf(const std::vector<std::string>& arguments) {
    const auto* const found =
        std::ranges::find(packageQueries, arguments.size() > 1 ? arguments[1] : "", &PackageQuery::option);
    return found == packageQueries.end() ? nullptr : found;
}

/// Numbers below 10 are left free, since the child's copies go there.
Descriptor duplicate(int number) {
    return Descriptor(::fcntl(number, F_DUPFD_CLOEXEC, 10));
}

void append(std::vector<std::string>& to, std::span<const std::string> from) {
    to.insert(to.end(), from.begin(), from.end());
}

// Where package tools keep their data, by the setting that tells them of another place.
struct PackagePlace {
    const char* setting;
    std::string_view path;
    const char* file = "";
};
constexpr std::array packagePlaces = {
    PackagePlace{"Dir::State", "/var/lib/apt"},
    PackagePlace{"Dir::Cache", "/var/cache/apt"},
    PackagePlace{"Dir::Cache::archives", devicename::packageArchives},
    PackagePlace{"Dir::State::status", devicename::packageDatabase, "/status"},
};

/// The path without links, which means the same for a tool that has the tree elsewhere than at its "/". A
/// folder that is missing is left to the tool's own words.
Result<std::string> placeInTree(FileManager& fileManager, std::string_view path) {
    if (const auto folder = fileManager.folderAtPath(path); !folder) {
        return meansAbsence(folder.error()) ? Result<std::string>(path) : std::unexpected(folder.error());
    }
    return fileManager.stringByResolvingSymlinksInPath(path);
}

Result<std::vector<std::string>> packageManagerOptions(const std::string& root, FileManager& fileManager) {
    const auto database = placeInTree(fileManager, devicename::packageDatabase);
    if (!database) {
        return std::unexpected(database.error());
    }
    // The log that the host's own settings name is the host's. The root sets the database's place, too, and
    // so comes first.
    return std::vector<std::string>{"--root=" + root, "--admindir=" + root + *database, "--log=/dev/null"};
}

Result<std::vector<std::string>> packageDownloaderOptions(const std::string& root, FileManager& fileManager) {
    std::vector<std::string> settings = {"Dir=" + root + "/"};
    for (const PackagePlace& place : packagePlaces) {
        const auto path = placeInTree(fileManager, place.path);
        if (!path) {
            return std::unexpected(path.error());
        }
        settings.push_back(std::string(place.setting) + "=" + root + *path + place.file);
    }
    if (const auto packageManager = hostProgram("dpkg")) {
        settings.push_back("Dir::Bin::dpkg=" + *packageManager);
    }
    const auto ofPackageManager = packageManagerOptions(root, fileManager);
    if (!ofPackageManager) {
        return ofPackageManager;
    }
    for (const std::string& option : *ofPackageManager) {
        settings.push_back("DPkg::Options::=" + option);
    }
    std::vector<std::string> options;
    for (const std::string& setting : settings) {
        append(options, std::array<std::string, 2>{"-o", setting});
    }
    return options;
}

} // namespace

Result<Command> Tool::command(const std::vector<std::string>& arguments, FileManager fileManager) const {
    Command command;
    if (_kind == Kind::standIn) {
        command.path = _program;
        command.arguments = arguments;
        command.environment = {"OZVARINE_DEVICE=" + _deviceDirectory};
        return command;
    }
    command.path = _helpers + "/ozenter";
    command.environment = minimalEnvironment;
    command.replacesEnvironment = true;
    command.descriptors.push_back(duplicate(fileManager.rootDescriptor()));
    // The package manager hands its queries on; the query tool itself can be kept in the tree like a search.
    const bool isPackageTool = _kind == Kind::packageManager || _kind == Kind::packageQuery;
    const PackageQuery* const query = isPackageTool ? packageQueryOf(arguments) : nullptr;
    Result<void> done;
    if (query != nullptr) {
        done =
            enterTree(command, query->mode, hostProgram("dpkg-query").value_or(""), arguments, fileManager);
    } else if (_kind == Kind::entered || _kind == Kind::packageQuery) {
        done = enterTree(command, "enter", _program, arguments, fileManager);
    } else {
        done = guardTree(command, arguments, fileManager);
    }
    return done ? Result<Command>(std::move(command)) : std::unexpected(done.error());
}

Result<void> Tool::enterTree(Command& command, const char* mode, const std::string& program,
                             const std::vector<std::string>& arguments, FileManager& fileManager) const {
    command.arguments = {"ozenter", mode, program, arguments.at(0)};
    command.descriptors.push_back(duplicate(fileManager.currentDirectoryDescriptor()));
    if (_kind != Kind::entered) {
        const auto database = placeInTree(fileManager, devicename::packageDatabase);
        if (!database) {
            return std::unexpected(database.error());
        }
        command.arguments.push_back("--admindir=" + *database);
    }
    append(command.arguments, std::span(arguments).subspan(1));
    return {};
}

Result<void> Tool::guardTree(Command& command, const std::vector<std::string>& arguments,
                             FileManager& fileManager) const {
    command.arguments = {"ozenter", "guard", _program, arguments.at(0)};
    if (_kind == Kind::packageDownloader) {
        command.environment.push_back("APT_CONFIG=" + _helpers + "/apt.conf");
    }
    const auto options = _kind == Kind::packageManager
                             ? packageManagerOptions(_rootDirectory, fileManager)
                             : packageDownloaderOptions(_rootDirectory, fileManager);
    if (!options) {
        return std::unexpected(options.error());
    }
    append(command.arguments, *options);
    append(command.arguments, std::span(arguments).subspan(1));
    // The helper looks into the database for what the tools must leave alone.
    if (const auto database = fileManager.folderAtPath(devicename::packageDatabase)) {
        command.descriptors.push_back(duplicate((*database)->descriptor()));
    }
    return {};
}

ToolTable::ToolTable(const std::optional<std::string>& toolsDirectory, std::string deviceDirectory,
                     std::string rootDirectory)
    : _deviceDirectory(std::move(deviceDirectory))
    , _rootDirectory(std::move(rootDirectory))
    , _helpers(helpersDirectory()) {
    if (toolsDirectory && isOurs(*toolsDirectory)) {
        _toolsDirectory = realPath(*toolsDirectory).value_or("");
    }
}

const std::vector<std::string_view>& ToolTable::searchDirectories() {
    static const std::vector<std::string_view> directories = {
        "/bin", "/sbin", "/usr/bin", "/usr/sbin", "/usr/local/bin", "/usr/local/sbin",
    };
    return directories;
}

std::optional<Tool> ToolTable::toolAt(std::string_view devicePath) const {
    if (const auto program = standInAt(devicePath)) {
        Tool tool;
        tool._program = *program;
        tool._deviceDirectory = _deviceDirectory;
        return tool;
    }
    return hostToolAt(devicePath);
}

std::optional<std::string> ToolTable::standInAt(std::string_view devicePath) const {
    if (_toolsDirectory.empty() || !devicePath.starts_with('/')) {
        return std::nullopt;
    }
    const auto path = realPath(_toolsDirectory + std::string(devicePath));
    if (!path || !path->starts_with(_toolsDirectory + "/") || !isProgram(*path)) {
        return std::nullopt;
    }
    // Somebody who may change one folder on the way could put their own program there.
    for (size_t end = path->size(); end >= _toolsDirectory.size(); end = path->rfind('/', end - 1)) {
        if (!isOurs(path->substr(0, end))) {
            return std::nullopt;
        }
    }
    return path;
}

bool ToolTable::hasStandInNamed(std::string_view name) const {
    return std::ranges::any_of(searchDirectories(), [&](std::string_view directory) {
        return standInAt(std::string(directory) + "/" + std::string(name)).has_value();
    });
}

std::optional<Tool> ToolTable::hostToolAt(std::string_view devicePath) const {
    struct HostTool {
        std::string_view name;
        Tool::Kind kind;
    };
    static constexpr std::array hostTools = {
        HostTool{"find", Tool::Kind::entered},
        HostTool{"sed", Tool::Kind::entered},
        HostTool{"dpkg-query", Tool::Kind::packageQuery},
        HostTool{"dpkg", Tool::Kind::packageManager},
        HostTool{"apt-get", Tool::Kind::packageDownloader},
    };
    const std::string name(lastPathComponent(devicePath));
    const auto* const found = std::ranges::find(hostTools, name, &HostTool::name);
    if (found == hostTools.end() || devicePath != "/usr/bin/" + name || hasStandInNamed(name)) {
        return std::nullopt;
    }
    const auto program = hostProgram(name);
    if (!program || _rootDirectory.empty() || !isProgram(_helpers + "/ozenter")) {
        return std::nullopt;
    }
    Tool tool;
    tool._kind = found->kind;
    tool._program = *program;
    tool._helpers = _helpers;
    tool._rootDirectory = _rootDirectory;
    return tool;
}

} // namespace platform
