#include "Tests/Model/Packages/PackageDatabase.h"

#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace tests {

PackageDatabase::PackageDatabase() {
    for (const char* folder : {"/var/lib/dpkg/info", "/var/lib/dpkg/updates", "/var/log"}) {
        fs::create_directories(device.hostPath(folder));
    }
    device.addFile("/var/lib/dpkg/status");
    device.addFile("/var/lib/dpkg/available");
}

void PackageDatabase::install(const std::string& name, std::string_view fields,
                              const std::vector<std::string>& files) const {
    const fs::path package = device.folder() / "package";
    fs::remove_all(package);
    fs::create_directories(package / "DEBIAN");
    std::ofstream(package / "DEBIAN/control")
        << "Package: " << name << "\nVersion: 1.0\nArchitecture: iphoneos-arm\nMaintainer: a <a@b>\n"
        << "Description: test\n"
        << fields;
    for (const std::string& file : files) {
        const fs::path path = package / file.substr(1);
        fs::create_directories(path.parent_path());
        std::ofstream(path) << file;
    }
    host("dpkg-deb --root-owner-group -b package package.deb");
    host("dpkg --root=Root --force-architecture --force-depends --log=/dev/null -i package.deb");
}

void PackageDatabase::host(const std::string& command) const {
    const std::string line =
        "cd '" + device.folder().string() + "' && (" + command + ") >host.log 2>&1 </dev/null";
    ASSERT_EQ(std::system(line.c_str()), 0) << command;
}

void PackageDatabase::answer(std::string_view tool, std::string_view text, int status) {
    std::ofstream(device.folder() / "answer", std::ios::binary) << text;
    device.addTool("/usr/bin/" + std::string(tool),
                   "cat \"$OZVARINE_DEVICE/answer\"\nexit " + std::to_string(status));
}

} // namespace tests
