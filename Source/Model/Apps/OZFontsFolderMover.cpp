#include "Model/Apps/OZFontsFolderMover.h"

#include "Categories/ByteText.h"
#include "Categories/Files.h"
#include "Platform/Device/Device.h"

#include <tuple>

#include <fmt/format.h>

namespace {

constexpr std::string_view cachePath = "/System/Library/Fonts/Cache";
constexpr std::string_view displacedSuffix = "OLD";

class Domain : public std::error_category {
  public:
    [[nodiscard]] const char* name() const noexcept override { return "Ozvarine"; }
    [[nodiscard]] std::string message(int code) const override {
        return fmt::format(
            "There is no fonts folder, neither at {} nor where a link there leads. ({} error {}.)",
            OZFontsFolderMover::systemPath, name(), code);
    }
};

bool isOnDataPartition(std::string_view path) {
    return path.starts_with("/var/") || path.starts_with("/private/var/");
}

} // namespace

const std::error_category& OZFontsFolderError::domain() {
    static const Domain domain;
    return domain;
}

std::string OZFontsFolderError::localizedDescription() const {
    return operation.empty() ? code.message() : fmt::format("Could not {}: {}.", operation, code.message());
}

OZFontsFolderMover::OZFontsFolderMover(platform::Device& device)
    : _fileManager(device.fileManager()) {}

std::optional<std::string> OZFontsFolderMover::currentFolderPath() {
    auto attributes = _fileManager.attributesOfItemAtPath(systemPath);
    std::string path(systemPath);
    if (attributes && attributes->type == platform::FileType::symbolicLink) {
        path = _fileManager.stringByResolvingSymlinksInPath(systemPath);
        attributes = _fileManager.attributesOfItemAtPath(path);
    }
    const bool isFolder = attributes && attributes->type == platform::FileType::directory;
    return isFolder ? std::optional(path) : std::nullopt;
}

OZFontsFolderLocation OZFontsFolderMover::folderLocation() {
    return locationForFolder(currentFolderPath());
}

OZFontsFolderLocation OZFontsFolderMover::locationForFolder(const std::optional<std::string>& path) {
    if (!path) {
        return OZFontsFolderLocation::unknown;
    }
    return isOnDataPartition(*path) ? OZFontsFolderLocation::data : OZFontsFolderLocation::system;
}

uint64_t OZFontsFolderMover::folderSize() {
    const auto path = currentFolderPath();
    return path ? sizeOfItemAtPath(_fileManager, *path) : 0;
}

std::string OZFontsFolderMover::humanReadableFolderSize() {
    const uint64_t size = folderSize();
    return humanReadableStringFromBytes(size, {.fractionalDigits = 0, .unit = unitForAnySize(size)});
}

/// One move: its steps, each of which says whether the next one may follow.
class OZFontsFolderMover::Move {
  public:
    Move(platform::FileManager& fileManager, std::optional<OZFontsFolderError>* error)
        : _fileManager(fileManager)
        , _error(error) {}

    bool perform(const std::string& from, OZFontsFolderLocation location) {
        const bool toData = location == OZFontsFolderLocation::system;
        const std::string destination(toData ? dataPath : systemPath);
        return (!toData || tidyUp()) && clear(destination) &&
               passes(_fileManager.moveItemAtPath(from, destination),
                      fmt::format("move {} to {}", from, destination)) &&
               (!toData || passes(_fileManager.createSymbolicLinkAtPath(systemPath, dataPath),
                                  fmt::format("link {} to {}", systemPath, dataPath)));
    }

  private:
    // A failure that nobody is told about stops nothing.
    template <class T>
    bool passes(const platform::Result<T>& result, const std::string& operation) {
        if (result || _error == nullptr) {
            return true;
        }
        *_error = {.code = result.error(), .operation = operation};
        return false;
    }

    // What an earlier move left half done becomes whole again, so that the folder moves with all its parts.
    bool tidyUp() {
        const auto cache = _fileManager.attributesOfItemAtPath(cachePath);
        if (!passes(cache, fmt::format("look at {}", cachePath))) {
            return false;
        }
        if (cache && cache->type == platform::FileType::symbolicLink) {
            const std::string target = _fileManager.stringByResolvingSymlinksInPath(cachePath);
            std::ignore = _fileManager.removeItemAtPath(cachePath);
            std::ignore = _fileManager.moveItemAtPath(target, cachePath);
        }
        const auto data = _fileManager.attributesOfItemAtPath(dataPath);
        if (data && data->type == platform::FileType::directory) {
            mergeDataFolder();
        }
        return true;
    }

    void mergeDataFolder() {
        const auto names = _fileManager.contentsOfDirectoryAtPath(dataPath);
        if (!names) {
            // What nobody could list has not moved, and must not go with the folder.
            return;
        }
        // What the system's folder has already may go; what a failing disk kept from moving must not, and the
        // folder then stays under its displaced name.
        bool mayGo = true;
        for (const auto& name : *names) {
            const auto moved = _fileManager.moveItemAtPath(platform::joinPath(dataPath, name),
                                                           platform::joinPath(systemPath, name));
            mayGo = mayGo && (moved || moved.error() == std::errc::file_exists);
        }
        if (mayGo) {
            std::ignore = _fileManager.removeItemAtPath(dataPath);
        }
    }

    bool clear(const std::string& destination) {
        const auto attributes = _fileManager.attributesOfItemAtPath(destination);
        if (!attributes && attributes.error() == std::errc::no_such_file_or_directory) {
            return true;
        }
        if (!passes(attributes, fmt::format("look at {}", destination))) {
            return false;
        }
        if (attributes && attributes->type == platform::FileType::symbolicLink) {
            return passes(_fileManager.removeItemAtPath(destination),
                          fmt::format("remove the link {}", destination));
        }
        const std::string displaced = destination + std::string(displacedSuffix);
        return passes(_fileManager.moveItemAtPath(destination, displaced),
                      fmt::format("move {} to {}", destination, displaced));
    }

    platform::FileManager& _fileManager;
    std::optional<OZFontsFolderError>* _error;
};

bool OZFontsFolderMover::moveFolder(std::optional<OZFontsFolderError>* error) {
    if (error != nullptr) {
        error->reset();
    }
    const auto path = currentFolderPath();
    const auto location = locationForFolder(path);
    if (location == OZFontsFolderLocation::unknown) {
        if (error != nullptr) {
            *error = {.code = {OZFontsFolderError::noFolder, OZFontsFolderError::domain()}, .operation = ""};
        }
        return false;
    }
    return Move(_fileManager, error).perform(*path, location);
}
