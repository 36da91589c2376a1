#include "DeviceBuild.h"
#include "DeviceFiles.h"
#include "StandInTools.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ozdevice::tests {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using ::tests::contentOf;
using ::tests::Outcome;
using ::tests::shell;
using ::tests::TemporaryFolder;

/// No more of a device than the tools look at.
class StandIn : public testing::Test {
  protected:
    StandIn() {
        fs::create_directory(root());
        std::ofstream(path() / factsFileName) << "facts";
        installStandInTools(path() / toolsFolderName);
        TreeWriter tree(root());
        const auto generation = Generation::make("11").value();
        const DeviceOptions options;
        DeviceBuild build(tree, generation, options);
        const LaunchServices services = addDaemons(build);
        const auto files = DeviceFiles::open(path());
        files->setLaunchServices(services);
        files->setProcesses(usualProcesses());
    }

    Outcome run(const std::string& commandLine) {
        return shell(fmt::format("OZVARINE_DEVICE='{0}' '{0}/Tools'/{1}", path().string(), commandLine));
    }

    [[nodiscard]] fs::path path() const { return _folder.path(); }
    [[nodiscard]] fs::path root() const { return path() / rootFolderName; }
    [[nodiscard]] std::string journal() const { return contentOf(path() / journalFileName); }
    [[nodiscard]] std::vector<std::string> processes() const {
        return DeviceFiles::open(path())->processes();
    }

  private:
    TemporaryFolder _folder;
};

TEST_F(StandIn, KillallEndsProcessesExceptBySignalOne) {
    EXPECT_EQ(run("usr/bin/killall -1 SpringBoard").status, 0);
    EXPECT_THAT(processes(), Contains("SpringBoard"));
    EXPECT_EQ(run("usr/bin/killall -9 Nobody SpringBoard").status, 0);
    EXPECT_THAT(processes(), Not(Contains("SpringBoard")));
    EXPECT_EQ(run("usr/bin/killall -9 SpringBoard").status, 1);
    EXPECT_EQ(run("usr/bin/killall backboardd").status, 0);
    EXPECT_THAT(processes(), Not(Contains("backboardd")));
    EXPECT_EQ(journal(), "killall -1 SpringBoard\n"
                         "killall -9 Nobody SpringBoard\n"
                         "killall -9 SpringBoard\n"
                         "killall backboardd\n");
}

TEST_F(StandIn, LaunchctlKeepsOverrides) {
    const std::string printd = "/System/Library/LaunchDaemons/com.apple.printd.plist";
    EXPECT_THAT(run("bin/launchctl print-disabled").output,
                testing::AllOf(HasSubstr("\t\"com.apple.syslogd\" => true\n"), Not(HasSubstr("printd"))));
    EXPECT_EQ(run("bin/launchctl unload -w " + printd).status, 0);
    EXPECT_THAT(run("bin/launchctl print-disabled").output, HasSubstr("\t\"com.apple.printd\" => true\n"));
    EXPECT_THAT(run("bin/launchctl list").output, Not(HasSubstr("\tcom.apple.printd\n")));

    EXPECT_EQ(run("bin/launchctl load " + printd).status, 0);
    EXPECT_THAT(run("bin/launchctl list").output, Not(HasSubstr("\tcom.apple.printd\n")))
        << "a disabled service was loaded without -w";
    EXPECT_EQ(run("bin/launchctl load -w " + printd).status, 0);
    EXPECT_THAT(run("bin/launchctl print-disabled system").output,
                HasSubstr("\t\"com.apple.printd\" => false\n"));
    EXPECT_THAT(run("bin/launchctl list").output, HasSubstr("\tcom.apple.printd\n"));

    EXPECT_EQ(run("bin/launchctl disable system/com.apple.gamed").status, 0);
    EXPECT_THAT(run("bin/launchctl print-disabled").output, HasSubstr("\t\"com.apple.gamed\" => true\n"));
}

TEST_F(StandIn, LaunchctlStopsAndStartsWhatItKnows) {
    EXPECT_EQ(run("bin/launchctl stop com.apple.backboardd").status, 0);
    EXPECT_THAT(run("bin/launchctl list").output, HasSubstr("-\t0\tcom.apple.backboardd\n"));
    EXPECT_EQ(run("bin/launchctl kickstart -k system/com.apple.backboardd").status, 0);
    EXPECT_THAT(run("bin/launchctl list").output, Not(HasSubstr("-\t0\tcom.apple.backboardd\n")));
    EXPECT_NE(run("bin/launchctl stop com.example.nothing").status, 0);
    EXPECT_NE(run("bin/launchctl load /etc/hosts").status, 0);
    EXPECT_NE(run("bin/launchctl frobnicate").status, 0);
}

TEST_F(StandIn, SuRunsTheDevicesToolsOnly) {
    EXPECT_EQ(run("bin/su -c uicache mobile").status, 0);
    EXPECT_EQ(journal(), "su -c uicache mobile\nuicache\n");

    // A host's program must stay out of reach, by whatever path.
    fs::create_symlink("/bin/echo", path() / "Tools/usr/bin/echo");
    fs::create_directory_symlink("/bin", path() / "Tools/host");
    for (const char* const command :
         {"ls", "/bin/ls", "../../bin/ls", "/../../../../bin/ls", "echo", "/host/ls"}) {
        EXPECT_EQ(run(fmt::format("bin/su -c '{} /' mobile", command)).status, 127) << command;
    }
}

TEST_F(StandIn, JournalLinesStayWhole) {
    run("usr/bin/killall \"$(printf 'two\\nlines')\" \"it's\"");
    EXPECT_EQ(journal(), "killall 'two?lines' 'it'\\''s'\n");

    shell(fmt::format("for n in $(seq 40); do OZVARINE_DEVICE='{0}' '{0}/Tools/sbin/reboot' & done; wait",
                      path().string()));
    const std::string lines = journal();
    EXPECT_EQ(std::ranges::count(lines, '\n'), 41);
    EXPECT_EQ(lines.size(), std::string("killall 'two?lines' 'it'\\''s'\n").size() + 40 * sizeof "reboot");
}

TEST_F(StandIn, NeedsADeviceFolder) {
    const std::string tool = path() / "Tools/sbin/reboot";
    const TemporaryFolder empty;
    EXPECT_NE(shell(fmt::format("env -u OZVARINE_DEVICE '{}'", tool)).status, 0);
    EXPECT_NE(shell(fmt::format("OZVARINE_DEVICE='{}' '{}'", empty.path(), tool)).status, 0);
    EXPECT_TRUE(fs::is_empty(empty.path()));

    // Where a link stands in place of the device's own files, what it leads to is left alone.
    const fs::path victim = empty.path("victim");
    std::ofstream(victim) << "kept";
    fs::remove(path() / "Journal.log");
    fs::create_symlink(victim, path() / "Journal.log");
    run("sbin/reboot");
    EXPECT_EQ(contentOf(victim), "kept");
}

} // namespace
} // namespace ozdevice::tests
