#include "Tests/Support/TemporaryDevice.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <stdlib.h>

namespace fs = std::filesystem;

namespace {

void writeFile(const fs::path& path, std::string_view content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace

TemporaryDevice::TemporaryDevice(platform::DeviceFacts facts)
    : _facts(std::move(facts)) {
    std::string folder = fs::temp_directory_path() / "ozvarine test XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("cannot make " + folder);
    }
    _folder = fs::canonical(folder);
    fs::create_directory(_folder / "Root");
    fs::create_directory(_folder / "Tools");
    fs::permissions(_folder / "Tools", fs::perms(0755));
}

TemporaryDevice::~TemporaryDevice() {
    _device.reset();
    std::error_code error;
    fs::remove_all(_folder, error);
}

fs::path TemporaryDevice::hostPath(std::string_view devicePath) const {
    return _folder / "Root" / devicePath.substr(1);
}

void TemporaryDevice::addFile(std::string_view devicePath, std::string_view content) {
    writeFile(hostPath(devicePath), content);
}

void TemporaryDevice::addLink(std::string_view devicePath, std::string_view destination) {
    fs::create_directories(hostPath(devicePath).parent_path());
    fs::create_symlink(destination, hostPath(devicePath));
}

void TemporaryDevice::addTool(std::string_view devicePath, std::string_view script) {
    const fs::path tools = _folder / "Tools";
    const fs::path path = tools / devicePath.substr(1);
    writeFile(path, "#!/bin/sh\n" + std::string(script) + "\n");
    // Whatever the tests' mask: a tool that others could change would not count.
    for (fs::path item = path; item != tools; item = item.parent_path()) {
        fs::permissions(item, fs::perms(0755));
    }
}

void TemporaryDevice::addNotingTool(std::string_view devicePath, int status) {
    addTool(devicePath, "echo \"$(basename \"$0\")${*:+ $*}\" >> \"$OZVARINE_DEVICE/Journal.log\"\nexit " +
                            std::to_string(status));
}

std::vector<std::string> TemporaryDevice::journal() const {
    std::ifstream file(_folder / "Journal.log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string TemporaryDevice::contents(std::string_view devicePath) const {
    std::ifstream file(hostPath(devicePath), std::ios::binary);
    return {std::istreambuf_iterator(file), {}};
}

platform::Device& TemporaryDevice::device() {
    if (!_device) {
        auto fileManager = platform::FileManager::atRoot(_folder / "Root");
        _device = std::make_unique<platform::Device>(
            fileManager.value(), _facts, platform::ToolTable(_folder / "Tools", _folder, _folder / "Root"));
    }
    return *_device;
}
