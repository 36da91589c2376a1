#pragma once

#include "Platform/Formats/PropertyList.h"
#include "Tests/Support/TemporaryDevice.h"

#include <string>
#include <string_view>

namespace tests {

/// Applications in a device's tree, laid out as the platform's generation does it.
class AppTree {
  public:
    explicit AppTree(TemporaryDevice& device)
        : _device(device) {}

    void addPlist(std::string_view path, const platform::Dictionary& content,
                  platform::PropertyListFormat format = platform::PropertyListFormat::xml) {
        _device.addFile(path, platform::serializePropertyList(content, format));
    }

    /// A bundle with its executable "Main"; `more` is added to its Info.plist.
    void addBundle(const std::string& path, const std::string& identifier, platform::Dictionary more = {},
                   platform::PropertyListFormat format = platform::PropertyListFormat::xml) {
        more.emplace("CFBundleIdentifier", identifier);
        more.emplace("CFBundleExecutable", "Main");
        addPlist(path + "/Info.plist", more, format);
        _device.addFile(path + "/Main", "code");
    }

    /// A container with the metadata that tells whose it is.
    void addContainer(const std::string& path, const std::string& identifier) {
        addPlist(path + "/.com.apple.mobile_container_manager.metadata.plist",
                 {{"MCMMetadataIdentifier", identifier}}, platform::PropertyListFormat::binary);
    }

  private:
    TemporaryDevice& _device;
};

} // namespace tests
