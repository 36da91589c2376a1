// What of a task needs threads, signals or descriptors; Tests/Scenarios/Tasks tells the rest.
#include "Model/Tasks/OZTask.h"

#include "Model/Tasks/SeparatedPieces.h"
#include "Platform/Files/Error.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/Usual.h"

namespace {

class OZTaskTest : public testing::Test {
  protected:
    /// A task with standard output captured, for a tool of these shell lines.
    std::shared_ptr<OZTask> make(std::string_view script, std::vector<std::string> arguments = {}) {
        device.addTool("/usr/bin/tool", script);
        auto task = OZTask::make(device.device(), "/usr/bin/tool", std::move(arguments));
        task->setStdOutAction(OZTaskStreamAction::capture);
        return task;
    }
    std::string output(std::string_view script) {
        const auto task = make(script);
        task->launchSynchronously();
        return task->output().value_or("none");
    }

    TemporaryDevice device;
};

} // namespace

TEST_F(OZTaskTest, runsOnce) {
    const auto task = make("exit 3", {"a", ""});
    EXPECT_FALSE(task->launched() || task->running() || task->terminated());
    EXPECT_EQ(task->processIdentifier(), OZTaskStatusInvalid);
    EXPECT_TRUE(task->launch() && task->launched() && task->running() && !task->terminated());
    EXPECT_GT(task->processIdentifier(), 0);
    EXPECT_EQ(task->terminationStatus(), OZTaskStatusInvalid);
    EXPECT_THROW(task->launch(), platform::Exception);
    EXPECT_TRUE(task->getOutput() && task->waitAndGetExitStatus() && !task->running() && task->terminated());
    EXPECT_EQ(task->terminationStatus(), 3);
    EXPECT_EQ(task->processIdentifier(), OZTaskStatusInvalid);
    EXPECT_THROW(task->launch(), platform::Exception);
    EXPECT_EQ(task->arguments(), (std::vector<std::string>{"a", ""}));

    const auto missing = OZTask::make(device.device(), "/usr/bin/none");
    EXPECT_TRUE(!missing->launch() && !missing->launched() && missing->terminated());
    EXPECT_FALSE(missing->launchAsynchronously()) << "a failed launch may be tried again";
}

TEST_F(OZTaskTest, tellsOfAChildThatSomebodyElseWaitedFor) {
    std::signal(SIGCHLD, SIG_IGN);
    const auto task = make("exit 0");
    task->launchSynchronously();
    std::signal(SIGCHLD, SIG_DFL);
    ASSERT_TRUE(task->error());
    EXPECT_EQ(task->error()->localizedDescription, "-[OZTask waitAndGetExitStatus] Error during waitpid.");
}

TEST_F(OZTaskTest, keepsALongOutputOrGivesItsPartsWhileTheToolStillRuns) {
    EXPECT_EQ(output("head -c 3000000 /dev/zero | tr '\\0' x"), std::string(3000000, 'x'));
    const std::string go = device.folder() / "go";
    ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
    const auto task = make("echo first; read -r answer < '" + go + "'; echo \"$answer\"");
    std::string text;
    task->setOutputHandler([&](std::string_view part) {
        if (text.empty()) {
            std::ofstream(go) << "second\n";
        }
        text += part;
    });
    EXPECT_TRUE(task->launchSynchronously());
    EXPECT_EQ(text, "first\nsecond\n");
    EXPECT_TRUE(!task->output() && task->outputBytes().empty());
}

TEST_F(OZTaskTest, announcesEveryEndOnTheMainQueueAndStaysAliveUntilThen) {
    std::string announced;
    const platform::Observation observation(
        device.device().notificationCenter(), OZTaskDidTerminateNotification, nullptr,
        [&](const platform::Notification& notification) {
            const auto& task = *static_cast<const OZTask*>(notification.object);
            announced += task.launchPath() + (task.terminated() ? " " : "?") + task.output().value_or("");
        });
    EXPECT_TRUE(make("echo done; exit 1")->launchAsynchronously());
    EXPECT_TRUE(device.device().mainQueue().runUntil([&] { return !announced.empty(); }, 60));
    EXPECT_EQ(announced, "/usr/bin/tool done\n");

    announced.clear();
    EXPECT_FALSE(OZTask::launchSyncTask(device.device(), "/bin/none", {}, true));
    EXPECT_EQ(announced, "") << "posted within the call";
    EXPECT_EQ(device.device().mainQueue().runPending(), 1U);
    EXPECT_EQ(announced, "/bin/none ");
}

TEST_F(OZTaskTest, isFreedAtItsEndWhereNobodyObserves) {
    for (const bool waits : {true, false}) {
        auto task = make("true");
        const std::weak_ptr<OZTask> ended = task;
        EXPECT_TRUE(waits ? task->launchSynchronously() : task->launchAsynchronously());
        task.reset();
        for (int tries = 0; tries < 6000 && !waits && !ended.expired(); ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_TRUE(ended.expired()) << waits;
    }
}

TEST_F(OZTaskTest, givesTheChildUsualSignalsTheDeviceAndNoDescriptors) {
    std::signal(SIGPIPE, SIG_IGN);
    const int inherited = ::dup(STDIN_FILENO);
    // Bits 12 and 16 are those of SIGPIPE and SIGCHLD; the shell itself blocks nothing, and has its own
    // script open alone.
    EXPECT_EQ(output("set -- $(grep -E 'Sig(Blk|Ign)' /proc/self/status); echo $2 $((0x$4 & 0x11000))\n"
                     "echo \"$OZVARINE_DEVICE\"\n"
                     "cd /proc/$$/fd; for fd in *; do [ $fd -lt 3 ] || readlink $fd; done"),
              fmt::format("0000000000000000 0\n{0}\n{0}/Tools/usr/bin/tool\n", device.folder().string()));
    ::close(inherited);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(SeparatedPieces, AreTheSameWhereverTheTextIsCut) {
    const std::string text = "<one<><<><two<>>end<";
    for (size_t length = 1; length <= text.size(); ++length) {
        std::vector<std::string> found;
        SeparatedPieces pieces("<>");
        for (size_t start = 0; start < text.size(); start += length) {
            pieces.add(std::string_view(text).substr(start, length),
                       [&](std::string_view piece) { found.emplace_back(piece); });
        }
        EXPECT_EQ(found, (std::vector<std::string>{"<one", "<", "<two"})) << length;
        EXPECT_EQ(pieces.rest(), ">end<");
    }
}
