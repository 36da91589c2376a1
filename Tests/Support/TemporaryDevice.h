#pragma once

#include "Platform/Device/Device.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A device folder that lives as long as this object: "Root", "Tools" and what its tools have noted.
class TemporaryDevice {
  public:
    explicit TemporaryDevice(platform::DeviceFacts facts = {});
    ~TemporaryDevice();

    [[nodiscard]] const std::filesystem::path& folder() const { return _folder; }
    /// The host's path of an item of the tree.
    [[nodiscard]] std::filesystem::path hostPath(std::string_view devicePath) const;

    /// Puts a file into the tree, with the folders that it needs.
    void addFile(std::string_view devicePath, std::string_view content = "");
    void addLink(std::string_view devicePath, std::string_view destination);
    /// Puts a stand-in tool under "Tools": a shell script of these lines.
    void addTool(std::string_view devicePath, std::string_view script);
    /// The same, with a script that notes its command line in the journal and ends with a status.
    void addNotingTool(std::string_view devicePath, int status = 0);

    /// The command lines of noting tools, in their order.
    [[nodiscard]] std::vector<std::string> journal() const;
    [[nodiscard]] std::string contents(std::string_view devicePath) const;

    /// Opened by the first call; tools may also be added later.
    platform::Device& device();

  private:
    std::filesystem::path _folder;
    platform::DeviceFacts _facts;
    std::unique_ptr<platform::Device> _device;
};
