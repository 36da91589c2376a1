#include "Maker.h"

#include "StandInTools.h"

#include <filesystem>
#include <fstream>

#include <fmt/format.h>

namespace ozdevice {
namespace {

namespace fs = std::filesystem;

constexpr const char* stagingFolderName = ".staging";

/// A directory for work in progress, gone when the work is.
class StagingDirectory {
  public:
    explicit StagingDirectory(fs::path path)
        : _path(std::move(path)) {
        fs::create_directory(_path);
    }
    StagingDirectory(const StagingDirectory&) = delete;
    StagingDirectory& operator=(const StagingDirectory&) = delete;
    ~StagingDirectory() {
        std::error_code ignored;
        fs::remove_all(_path, ignored);
    }
    [[nodiscard]] std::string path() const { return _path; }

  private:
    fs::path _path;
};

void writeHostFile(const fs::path& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error(fmt::format("cannot write {}", path.string()));
    }
}

void fillTree(DeviceBuild& build, const fs::path& directory) {
    addSystemTree(build);
    addApplications(build);
    addMessages(build);
    addCaches(build);
    addLogs(build);
    addLanguages(build);
    addDictionaries(build);
    addPreferences(build);
    const StagingDirectory staging(directory / stagingFolderName);
    addPackages(build, staging.path());
    addJunk(build);
}

void make(const fs::path& directory, const Generation& generation, const DeviceOptions& options) {
    const std::string_view model = options.model.empty() ? generation.usualModel() : options.model;
    fs::create_directories(directory / rootFolderName);
    writeHostFile(directory / factsFileName,
                  serializePropertyList(deviceFacts(generation, model), platform::PropertyListFormat::xml));
    writeHostFile(directory / journalFileName, "");
    TreeWriter tree(directory / rootFolderName);
    DeviceBuild build(tree, generation, options);
    fillTree(build, directory);
    const LaunchServices services = addDaemons(build);
    tree.dateFolders();
    installStandInTools(directory / toolsFolderName);
    const auto files = DeviceFiles::open(directory);
    if (!files) {
        throw std::runtime_error(files.error());
    }
    files->setLaunchServices(services);
    files->setProcesses(usualProcesses());
}

/// Takes away what was made in a directory that was missing or empty before.
void undo(const fs::path& directory, bool wasThere) {
    std::error_code ignored;
    if (!wasThere) {
        fs::remove_all(directory, ignored);
        return;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, ignored)) {
        fs::remove_all(entry.path(), ignored);
    }
}

/// What stands against a new device in the directory; empty for nothing.
std::string obstacle(const fs::path& directory) {
    std::error_code error;
    const fs::file_status status = fs::status(directory, error);
    if (!fs::exists(status)) {
        return {};
    }
    if (!fs::is_directory(status)) {
        return fmt::format("{} is no directory; name a new or an empty one", directory.string());
    }
    const bool isEmpty = fs::is_empty(directory, error);
    if (error) {
        return fmt::format("cannot read {}: {}", directory.string(), error.message());
    }
    return isEmpty ? ""
                   : fmt::format("{} is not empty; name a new or an empty directory", directory.string());
}

} // namespace

platform::Dictionary deviceFacts(const Generation& generation, std::string_view model) {
    return {
        {"FoundationVersion", generation.foundationVersion},
        {"CoreFoundationVersion", generation.coreFoundationVersion},
        {"HardwareModel", model},
        {"SystemVersion", generation.productVersion},
        {"TimeZone", "Europe/Berlin"},
        {"CarrierCountryCode", "262"},
        {"CarrierISOCountryCode", "de"},
    };
}

std::expected<void, std::string> createDevice(const std::string& directory, const DeviceOptions& options) {
    const auto generation = Generation::make(options.productVersion);
    if (!generation) {
        return std::unexpected(generation.error());
    }
    if (std::string reason = obstacle(directory); !reason.empty()) {
        return std::unexpected(std::move(reason));
    }
    const bool wasThere = fs::exists(directory);
    try {
        make(fs::absolute(directory), *generation, options);
    } catch (const std::exception& exception) {
        undo(directory, wasThere);
        return std::unexpected(fmt::format("cannot make the device: {}", exception.what()));
    }
    return {};
}

} // namespace ozdevice
