// The host's own tools, run for a device: what they see, what they can change, and what a hostile tree can do
// to them. They need root, or a user namespace that maps it.

#include "Model/Tasks/OZTask.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/TemporaryDevice.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

class HostTools : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
    }

    std::shared_ptr<OZTask> run(std::string_view path, Lines arguments) {
        auto task = OZTask::make(device(), path, std::move(arguments));
        task->setStdOutAction(OZTaskStreamAction::capture);
        task->setStdErrAction(OZTaskStreamAction::capture);
        task->launchSynchronously();
        return task;
    }

    std::string output(std::string_view path, Lines arguments) {
        return run(path, std::move(arguments))->output().value_or("(not UTF-8)");
    }

    /// The lines of a search, sorted.
    Lines find(Lines arguments) {
        std::istringstream text(output("/usr/bin/find", std::move(arguments)));
        Lines lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        std::ranges::sort(lines);
        return lines;
    }

    platform::Device& device() { return temporary.device(); }
    /// A file of the host outside of the tree, which nothing may touch.
    [[nodiscard]] fs::path outside() const { return temporary.folder() / "outside"; }

    TemporaryDevice temporary;
};

TEST_F(HostTools, SearchSeesTheTreeAlone) {
    temporary.addFile("/var/a.log");
    temporary.addFile("/var/mobile/a.log");
    std::ofstream(outside()) << "x";
    temporary.addLink("/var/out", temporary.folder().string());
    temporary.addLink("/var/up", "../../../../../../../..");
    EXPECT_EQ(find({"/", "-name", "a.log"}), (Lines{"/var/a.log", "/var/mobile/a.log"}));
    EXPECT_EQ(
        find({"-L", "/var/out", "/var/up/..", "-name", "outside"}),
        Lines{"find: File system loop detected; '/var/up/../var/up' is part of the same file system loop as "
              "'/var/up/..'."});
    EXPECT_EQ(find({"/../..", "-maxdepth", "1"}), (Lines{"/../..", "/../../var"}));
    EXPECT_EQ(find({"/var/out/"}), Lines{"find: '/var/out/': No such file or directory"});
}

TEST_F(HostTools, SearchStartsAtTheDevicesCurrentDirectory) {
    temporary.addFile("/var/mobile/one/a.log");
    ASSERT_TRUE(device().fileManager().changeCurrentDirectoryPath("/var/mobile"));
    EXPECT_EQ(find({".", "-type", "f"}), Lines{"./one/a.log"});
    EXPECT_EQ(find({"one", "-name", "a*"}), Lines{"one/a.log"});
    EXPECT_EQ(find({"../../../../..", "-maxdepth", "1"}), (Lines{"../../../../..", "../../../../../var"}));
}

TEST_F(HostTools, SearchMatchesNamesOfAnyBytes) {
    temporary.addFile("/logs/\xff\xfe.log");
    const auto task = run("/usr/bin/find", {"/logs", "-regex", "^.*\\.log$", "-printf", "x"});
    EXPECT_EQ(task->output(), "x");
}

TEST_F(HostTools, TreeCannotSteerTheLoader) {
    temporary.addFile("/a.log");
    // Whatever of these were loaded, the tool would not run.
    for (const char* path :
         {"/lib/x86_64-linux-gnu/libc.so.6", "/usr/lib/x86_64-linux-gnu/libc.so.6",
          "/usr/lib/x86_64-linux-gnu/libselinux.so.1", "/lib64/ld-linux-x86-64.so.2", "/lib/libc.so.6",
          "/usr/lib/libm.so.6", "/libc.so.6", "/libozenter.so", "/etc/ld.so.cache", "/evil.so"}) {
        temporary.addFile(path, "not a library");
    }
    temporary.addFile("/etc/ld.so.preload", "/evil.so\n");
    EXPECT_EQ(find({"/", "-name", "a.log"}), Lines{"/a.log"});
    EXPECT_EQ(output("/usr/bin/sed", {"--version"}).substr(0, 3), "sed");
}

TEST_F(HostTools, TreeCannotGiveCodeToATool) {
    for (const char* name : {"sh", "touch"}) {
        fs::create_directories(temporary.hostPath("/bin"));
        fs::copy_file(fs::path("/bin") / name, temporary.hostPath("/bin") / name);
    }
    // This library works anywhere, and ends any process that loads it with status 126.
    const fs::path library = fs::canonical("/proc/self/exe").parent_path() / "../libexec/libozenter.so";
    for (const char* folder : {"/lib", "/lib/x86_64-linux-gnu", "/lib/aarch64-linux-gnu"}) {
        fs::create_directories(temporary.hostPath(folder));
        fs::copy_file(library, temporary.hostPath(folder) / "libnss_evil.so.2");
    }
    temporary.addFile("/etc/nsswitch.conf", "passwd: evil\n");
    EXPECT_EQ(run("/usr/bin/find", {"/", "-user", "nobody"})->terminationStatus(), 1);
    run("/usr/bin/find", {"/bin/sh", "-exec", "/bin/touch", "/canary", ";"});
    run("/usr/bin/sed", {"1e /bin/touch /canary", "/etc/nsswitch.conf"});
    EXPECT_FALSE(fs::exists(temporary.hostPath("/canary")));
}

TEST_F(HostTools, ToolsInheritNothingOfThisProcess) {
    ::setenv("LD_PRELOAD", "/nowhere/evil.so", 1);
    temporary.addFile("/a.log");
    const Lines found = find({"/", "-name", "a.log"});
    ::unsetenv("LD_PRELOAD");
    EXPECT_EQ(found, Lines{"/a.log"});
}

TEST_F(HostTools, StreamEditorEditsInsideTheTree) {
    temporary.addFile("/var/log.txt", "1\n2\n3\n4\n");
    std::ofstream(outside()) << "1\n";
    temporary.addLink("/var/link", outside().string());
    ASSERT_TRUE(
        OZTask::launchSyncTask(device(), "/usr/bin/sed", {"-i", "4i\\summary", "/var/log.txt"}, true));
    EXPECT_EQ(temporary.contents("/var/log.txt"), "1\n2\n3\nsummary\n4\n");
    EXPECT_NE(run("/usr/bin/sed", {"-i", "--follow-symlinks", "s/1/2/", "/var/link"})->terminationStatus(),
              0);
    EXPECT_THAT(tests::contentOf(outside()), testing::StartsWith("1\n"));
}

} // namespace
