#include "Model/Tasks/OZDeviceActions.h"

#include "Model/Tasks/OZTaskManager.h"
#include "Tests/Support/TemporaryDevice.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

const Lines hardKill = {"killall -9 backboardd SpringBoard sbreload"};

/// What a device did, sleeps included, while an action was performed.
class Recorder {
  public:
    explicit Recorder(double foundationVersion)
        : _device({.foundationVersion = foundationVersion}) {
        _device.device().setSleep([this](double seconds) { note("sleep " + std::to_string(int(seconds))); });
    }

    TemporaryDevice& temporary() { return _device; }

    Lines perform(OZDeviceAction action, bool hasPortal = false) {
        const auto isInstalled = [hasPortal](std::string_view identifier) {
            return hasPortal && identifier == "com.qwertyoruiopz.zmach-portal";
        };
        std::filesystem::remove(_device.folder() / "Journal.log");
        OZDeviceActions(_device.device(), isInstalled, [this] { note("prepare"); }).performAction(action);
        return _device.journal();
    }

  private:
    void note(const std::string& line) {
        std::system(("echo '" + line + "' >> '" + (_device.folder() / "Journal.log").string() + "'").c_str());
    }

    TemporaryDevice _device;
};

Lines joined(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

TEST(OZDeviceActions, RespringFitsThePlatform) {
    struct Row {
        double version;
        bool hasPortal;
        Lines polite;
    };
    const Lines stop = {"prepare", "launchctl stop com.apple.backboardd", "sleep 10"};
    const Lines hangup = {"prepare", "killall -1 SpringBoard", "sleep 10"};
    for (const Row& row : {Row{991.9, true, {"prepare"}}, Row{992.0, true, stop}, Row{1299.9, true, stop},
                           Row{1300.0, false, stop}, Row{1300.0, true, hangup}}) {
        Recorder recorder(row.version);
        recorder.temporary().addNotingTool("/bin/launchctl");
        recorder.temporary().addNotingTool("/usr/bin/killall");
        EXPECT_EQ(recorder.perform(OZDeviceAction::respring, row.hasPortal), joined(row.polite, hardKill))
            << row.version;
    }
}

TEST(OZDeviceActions, MissingToolsArePassedOver) {
    Recorder recorder(1300);
    EXPECT_EQ(recorder.perform(OZDeviceAction::reboot), Lines{"prepare"});
    EXPECT_EQ(recorder.perform(OZDeviceAction::respring), Lines{"prepare"});
    EXPECT_EQ(recorder.perform(OZDeviceAction::rebuildUICacheAndRespring), (Lines{"sleep 3", "prepare"}));
    recorder.temporary().addNotingTool("/usr/bin/killall");
    EXPECT_EQ(recorder.perform(OZDeviceAction::respring), joined({"prepare"}, hardKill));
}

TEST(OZDeviceActions, EachActionRunsItsTools) {
    Recorder recorder(800);
    for (const char* tool : {"/bin/su", "/usr/bin/killall", "/sbin/reboot"}) {
        recorder.temporary().addNotingTool(tool);
    }
    EXPECT_EQ(recorder.perform(OZDeviceAction::none), Lines{});
    EXPECT_EQ(recorder.perform(static_cast<OZDeviceAction>(4)), Lines{});
    EXPECT_EQ(recorder.perform(OZDeviceAction::reboot), (Lines{"prepare", "reboot"}));
    EXPECT_EQ(recorder.perform(OZDeviceAction::rebuildUICacheAndRespring),
              joined({"su -c uicache mobile", "sleep 3", "prepare"}, hardKill));
}

TEST(OZTaskManager, GivesTheStatusOfTheTool) {
    TemporaryDevice device;
    EXPECT_EQ(OZTaskManager::killTaskWithName(device.device(), "x"), 1) << "no tool";
    device.addNotingTool("/usr/bin/killall", 7);
    EXPECT_EQ(OZTaskManager::killTaskWithName(device.device(), "x", 15), 7);
    EXPECT_EQ(OZTaskManager::killTasksWithNames(device.device(), {}), 1);
    EXPECT_EQ(OZTaskManager::killTasksWithNames(device.device(), {"a", "b c"}), 7);
    EXPECT_EQ(device.journal(), (Lines{"killall -15 x", "killall -9 a b c"}));
    device.addTool("/usr/bin/killall", "kill -9 $$");
    EXPECT_EQ(OZTaskManager::killTaskWithName(device.device(), "x"), 1) << "the tool was killed";
}

} // namespace
