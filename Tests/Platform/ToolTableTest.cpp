#include "Platform/Device/ToolTable.h"

#include "Tests/Support/TemporaryDevice.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

platform::ToolTable tableOf(const TemporaryDevice& device) {
    return {device.folder() / "Tools", device.folder(), device.folder() / "Root"};
}

std::string programAt(TemporaryDevice& device, const platform::ToolTable& table,
                      std::string_view devicePath) {
    const auto tool = table.toolAt(devicePath);
    return tool ? tool->command({"name"}, device.device().fileManager())->path : "";
}

TEST(ToolTable, OffersTheHostsOwnToolsAtOnePathOnly) {
    const TemporaryDevice device;
    const auto table = tableOf(device);
    for (const char* name : {"find", "sed", "dpkg", "dpkg-query", "apt-get"}) {
        EXPECT_TRUE(table.isExecutable(std::string("/usr/bin/") + name)) << name;
    }
    // The host has most of these, and none of them may ever be run for a device.
    for (const char* path : {"/bin/find", "/bin/sed", "/usr/bin/killall", "/bin/launchctl", "/bin/su",
                             "/sbin/reboot", "/usr/sbin/reboot", "/usr/bin/uicache", "/bin/sh",
                             "/usr/bin/env", "/usr/bin/../bin/find", "/usr/bin", "find", ""}) {
        EXPECT_FALSE(table.isExecutable(path)) << path;
    }
    EXPECT_FALSE(platform::ToolTable().isExecutable("/usr/bin/find")) << "no device, no tools";
}

TEST(ToolTable, StandInsComeFirst) {
    TemporaryDevice device;
    device.addTool("/bin/sed", "exit 0");
    device.addTool("/usr/local/bin/any", "exit 0");
    device.addFile("/usr/bin/killall", "#!/bin/sh\n");
    const auto table = tableOf(device);
    EXPECT_EQ(programAt(device, table, "/bin/sed"), device.folder() / "Tools/bin/sed");
    EXPECT_FALSE(table.isExecutable("/usr/bin/sed")) << "the device has its sed elsewhere";
    EXPECT_TRUE(table.isExecutable("/usr/local/bin/any"));
    EXPECT_FALSE(table.isExecutable("/usr/bin/killall")) << "what lies in the tree is no tool";
    fs::permissions(device.folder() / "Tools/bin/sed", fs::perms(0644));
    EXPECT_FALSE(table.isExecutable("/bin/sed"));
    EXPECT_TRUE(table.isExecutable("/usr/bin/sed"));
}

TEST(ToolTable, LinksLeadNowhereButToStandIns) {
    TemporaryDevice device;
    device.addTool("/bin/real", "exit 0");
    const fs::path bin = device.folder() / "Tools/bin";
    fs::create_symlink("real", bin / "killall");
    fs::create_symlink("/bin/sh", bin / "launchctl");
    fs::create_symlink("../../../../../../../../../../bin/sh", bin / "su");
    fs::create_directory_symlink("/usr/bin", device.folder() / "Tools/sbin");
    const auto table = tableOf(device);
    EXPECT_EQ(programAt(device, table, "/bin/killall"), bin / "real");
    for (const char* path : {"/bin/launchctl", "/bin/su", "/sbin/env", "/../../../../../../../../bin/sh"}) {
        EXPECT_FALSE(table.isExecutable(path)) << path;
    }
}

TEST(ToolTable, StandInsThatOthersCouldChangeDoNotCount) {
    for (const char* item : {"Tools", "Tools/usr", "Tools/usr/bin", "Tools/usr/bin/tool"}) {
        for (const fs::perms writable : {fs::perms::group_write, fs::perms::others_write}) {
            TemporaryDevice device;
            device.addTool("/usr/bin/tool", "exit 0");
            EXPECT_TRUE(tableOf(device).isExecutable("/usr/bin/tool"));
            fs::permissions(device.folder() / item, writable, fs::perm_options::add);
            EXPECT_FALSE(tableOf(device).isExecutable("/usr/bin/tool")) << item;
        }
        TemporaryDevice device;
        device.addTool("/usr/bin/tool", "exit 0");
        // Only root itself can give files away.
        if (::chown((device.folder() / item).c_str(), 12345, 12345) == 0) {
            EXPECT_FALSE(tableOf(device).isExecutable("/usr/bin/tool")) << item;
        }
    }
    const TemporaryDevice device;
    fs::remove(device.folder() / "Tools");
    fs::create_directory_symlink("/usr", device.folder() / "Tools");
    EXPECT_FALSE(tableOf(device).isExecutable("/bin/env")) << "a link to the host's own programs";
}

} // namespace
