#include "Model/Items/Togglable/OZTogglableFile.h"

#include "Platform/Device/Device.h"

#include <fmt/format.h>

namespace {

bool isPresent(const platform::Device& device, std::string_view path) {
    const auto attributes = device.fileManager().attributesOfItemAtPath(path);
    return attributes && attributes->type != platform::FileType::directory;
}

std::string_view folderOf(std::string_view path) {
    return path.substr(0, path.rfind('/') + 1);
}

/// Makes sure that a folder is there, in place of whatever else stands there. A link to a folder is that
/// folder, with all that others have in it.
bool ensureFolder(platform::FileManager& fileManager, std::string_view path) {
    const auto attributes = fileManager.attributesOfTargetAtPath(path);
    if (attributes && attributes->type == platform::FileType::directory) {
        return true;
    }
    // That nobody can tell what stands there, or where it leads, is no reason to remove it.
    if (!attributes && !platform::meansAbsence(attributes.error())) {
        return false;
    }
    std::ignore = fileManager.removeItemAtPath(path);
    return fileManager.createDirectoryAtPath(path, platform::IntermediateFolders::create).has_value();
}

} // namespace

OZTogglableFile::Found::Found(platform::Device& device, std::string identifier, std::string enabledPath,
                              std::string disabledPath, bool enabled)
    : _device(&device)
    , _identifier(std::move(identifier))
    , _enabledPath(std::move(enabledPath))
    , _disabledPath(std::move(disabledPath))
    , _enabled(enabled) {}

std::optional<OZTogglableFile::Found> OZTogglableFile::find(platform::Device& device,
                                                            std::string_view identifier,
                                                            std::string_view enabledPath,
                                                            std::string_view disabledPath) {
    OZ_REQUIRE(!identifier.empty());
    const bool enabled = isPresent(device, enabledPath);
    if (!enabled && !isPresent(device, disabledPath)) {
        return std::nullopt;
    }
    return Found(device, std::string(identifier), std::string(enabledPath), std::string(disabledPath),
                 enabled);
}

std::optional<std::string> OZTogglableFile::pathOf(std::optional<std::string_view> folder,
                                                   std::string_view name,
                                                   std::optional<std::string_view> extension) {
    if (!folder || !extension) {
        return std::nullopt;
    }
    return fmt::format("{}{}{}.{}", *folder, folder->ends_with('/') ? "" : "/", name, *extension);
}

OZTogglableFile::OZTogglableFile(Found found)
    : _device(*found._device)
    , _enabledState(found._enabled)
    , _disabledPath(std::move(found._disabledPath))
    , _enabledPath(std::move(found._enabledPath))
    , _identifier(std::move(found._identifier)) {}

std::optional<std::string> OZTogglableFile::currentPath() const {
    for (const std::string& path : {_enabledPath, _disabledPath}) {
        if (isPresent(_device, path)) {
            return path;
        }
    }
    return std::nullopt;
}

bool OZTogglableFile::currentEnabledState() {
    return isPresent(_device, _enabledPath);
}

bool OZTogglableFile::applyChanges() {
    if (currentEnabledState() == _enabledState) {
        return false;
    }
    const auto current = currentPath();
    const std::string& target = _enabledState ? _enabledPath : _disabledPath;
    if (!current || *current == target) {
        return false;
    }
    auto fileManager = _device.fileManager();
    if (!ensureFolder(fileManager, folderOf(target))) {
        return false;
    }
    std::ignore = fileManager.removeItemAtPath(target);
    return fileManager.moveItemAtPath(*current, target).has_value();
}

bool OZTogglableFile::discardChanges() {
    const bool current = currentEnabledState();
    const bool changed = current != _enabledState;
    _enabledState = current;
    return changed;
}
