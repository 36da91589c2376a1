#include "Model/Plugins/OZPlugin.h"

#include "Platform/Device/Device.h"

namespace {

bool fileExists(platform::FileManager fileManager, std::string_view path) {
    bool isDirectory = false;
    return fileManager.fileExistsAtPath(path, &isDirectory) && !isDirectory;
}

} // namespace

OZPlugin::OZPlugin(const platform::Device& device, std::string identifier, std::string dependency,
                   std::string dependencyDylibPath, bool requiresRespring)
    : _requiresRespring(requiresRespring)
    , _dependency(std::move(dependency))
    , _dependencyDylibPath(std::move(dependencyDylibPath))
    , _identifier(std::move(identifier)) {
    if (_identifier.empty() || _dependency.empty() || _dependencyDylibPath.empty()) {
        throw platform::AssertionFailure("identifier && dependency && dependencyDylibPath");
    }
    _available = fileExists(device.fileManager(), _dependencyDylibPath);
}
