#include "Model/Tasks/OZTask.h"

#include "Model/Tasks/SeparatedPieces.h"
#include "Platform/Files/Error.h"
#include "Tests/Support/TemporaryDevice.h"

#include <csignal>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Runs a tool of these shell lines with standard output captured.
std::shared_ptr<OZTask> run(TemporaryDevice& device, std::string_view script,
                            std::vector<std::string> arguments = {}) {
    device.addTool("/usr/bin/tool", script);
    auto task = OZTask::make(device.device(), "/usr/bin/tool", std::move(arguments));
    task->setStdOutAction(OZTaskStreamAction::capture);
    task->launchSynchronously();
    return task;
}

std::string thrownReason(const std::function<void()>& action) {
    try {
        action();
    } catch (const platform::Exception& exception) {
        return exception.name() + " " + exception.what();
    }
    return "";
}

TEST(OZTask, RejectsRelativePathsAndSecondLaunches) {
    TemporaryDevice device;
    EXPECT_EQ(thrownReason([&] { std::ignore = OZTask::make(device.device(), "true"); }),
              "NSInvalidArgumentException [OZTask: invalid launch path]");
    const auto task = run(device, "exit 0");
    EXPECT_EQ(thrownReason([&] { task->launch(); }),
              "NSInvalidArgumentException [OZTask: attempted to launch or modify instance after launch]");
}

TEST(OZTask, PassesArgumentsAndNameAsTheyAre) {
    TemporaryDevice device;
    const std::vector<std::string> arguments = {"two words", "", "$HOME;`id`", "*", "\xff"};
    const auto task =
        run(device, "printf '%s|' \"$(basename \"$0\")\" \"$@\" | od -An -c | tr -d ' \\n'", arguments);
    EXPECT_EQ(task->output(), "tool|twowords||$HOME;`id`|*|377|");
    EXPECT_EQ(task->arguments(), arguments);
    EXPECT_EQ(task->launchPath(), "/usr/bin/tool");
    EXPECT_TRUE(run(device, "exit 0")->arguments().empty());
}

TEST(OZTask, ReportsExitStatus) {
    TemporaryDevice device;
    device.addTool("/bin/tool", "exit 3");
    const auto task = OZTask::make(device.device(), "/bin/tool");
    EXPECT_EQ(task->terminationStatus(), OZTaskStatusInvalid);
    EXPECT_EQ(task->processIdentifier(), OZTaskStatusInvalid);
    EXPECT_TRUE(task->launchSynchronously());
    EXPECT_EQ(task->terminationStatus(), 3);
    EXPECT_TRUE(task->launched() && task->terminated() && !task->running());
    EXPECT_FALSE(task->error() || task->output());
}

TEST(OZTask, ReportsSignalsAndMissingTools) {
    TemporaryDevice device;
    const auto killed = run(device, "echo text; kill -9 $$");
    EXPECT_EQ(killed->terminationStatus(), OZTaskStatusInvalid);
    ASSERT_TRUE(killed->error());
    EXPECT_EQ(killed->error()->code, OZTaskStatusSignaled);
    EXPECT_EQ(killed->error()->domain, "com.ozlabs.OZTask");
    EXPECT_EQ(killed->error()->localizedDescription,
              "-[OZTask waitAndGetExitStatus] Task exited after being signaled.");
    EXPECT_EQ(killed->output(), "text\n");

    const auto missing = OZTask::make(device.device(), "/usr/bin/none");
    EXPECT_FALSE(missing->launch());
    EXPECT_FALSE(missing->launched());
    EXPECT_TRUE(missing->terminated());
    EXPECT_EQ(missing->error()->localizedDescription, "-[OZTask launch] Unknown error: 2");
    EXPECT_EQ(missing->error()->code, 2);
    EXPECT_FALSE(missing->launchAsynchronously()) << "a failed launch may be tried again";
}

TEST(OZTask, ReportsAChildThatSomebodyElseWaitedFor) {
    TemporaryDevice device;
    std::signal(SIGCHLD, SIG_IGN);
    const auto task = run(device, "exit 0");
    std::signal(SIGCHLD, SIG_DFL);
    ASSERT_TRUE(task->error());
    EXPECT_EQ(task->error()->localizedDescription, "-[OZTask waitAndGetExitStatus] Error during waitpid.");
}

TEST(OZTask, CapturesWhatIsAskedFor) {
    struct Row {
        OZTaskStreamAction out;
        OZTaskStreamAction err;
        std::optional<std::string> output;
    };
    using enum OZTaskStreamAction;
    TemporaryDevice device;
    device.addTool("/bin/tool", "echo out1; echo err1 >&2; echo out2");
    for (const Row& row :
         {Row{capture, discard, "out1\nout2\n"}, Row{discard, capture, "err1\n"},
          Row{capture, capture, "out1\nerr1\nout2\n"}, Row{discard, discard, std::nullopt}}) {
        const auto task = OZTask::make(device.device(), "/bin/tool");
        task->setStdOutAction(row.out);
        task->setStdErrAction(row.err);
        EXPECT_TRUE(task->launchSynchronously());
        EXPECT_EQ(task->output(), row.output);
    }
}

TEST(OZTask, DecodesAllOfTheOutputOrNothing) {
    TemporaryDevice device;
    EXPECT_EQ(run(device, "printf 'gr\\303\\274n'")->output(), "gr\xc3\xbcn");
    EXPECT_EQ(run(device, "printf ''")->output(), "");
    for (const char* bytes : {"\\377", "fine\\303", "\\355\\240\\200", "\\300\\200"}) {
        const auto task = run(device, std::string("printf '") + bytes + "'");
        EXPECT_EQ(task->output(), std::nullopt) << bytes;
        EXPECT_EQ(task->terminationStatus(), 0);
    }
    EXPECT_EQ(run(device, "head -c 3000000 /dev/zero | tr '\\0' x")->output(), std::string(3000000, 'x'));
}

TEST(OZTask, GivesPartsToAHandlerWhileTheToolStillRuns) {
    TemporaryDevice device;
    const std::string go = device.folder() / "go";
    device.addTool("/usr/bin/tool", "echo first; read -r answer < '" + go + "'; echo \"$answer\"");
    ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
    const auto task = OZTask::make(device.device(), "/usr/bin/tool");
    task->setStdOutAction(OZTaskStreamAction::capture);
    std::string text;
    task->setOutputHandler([&](std::string_view part) {
        if (text.empty()) {
            std::ofstream(go) << "second\n";
        }
        text += part;
    });
    EXPECT_TRUE(task->launchSynchronously());
    EXPECT_EQ(text, "first\nsecond\n");
    EXPECT_FALSE(task->output());
    EXPECT_EQ(task->outputBytes(), "");
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

TEST(OZTask, IsFreedAtItsEndWhereNobodyObserves) {
    TemporaryDevice device;
    device.addTool("/bin/tool", "true");
    for (const bool waits : {true, false}) {
        auto task = OZTask::make(device.device(), "/bin/tool");
        const std::weak_ptr<OZTask> ended = task;
        EXPECT_TRUE(waits ? task->launchSynchronously() : task->launchAsynchronously());
        task.reset();
        for (int tries = 0; tries < 6000 && !waits && !ended.expired(); ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_TRUE(ended.expired()) << waits;
    }
}

TEST(OZTask, AnnouncesEveryEndOnTheMainQueueAndStaysAliveUntilThen) {
    TemporaryDevice device;
    device.addTool("/bin/tool", "echo done; exit 1");
    std::string announced;
    const platform::Observation observation(
        device.device().notificationCenter(), OZTaskDidTerminateNotification, nullptr,
        [&](const platform::Notification& notification) {
            const auto& task = *static_cast<const OZTask*>(notification.object);
            announced +=
                task.launchPath() + " " + std::to_string(task.terminated()) + task.output().value_or("");
        });
    {
        const auto task = OZTask::make(device.device(), "/bin/tool");
        task->setStdOutAction(OZTaskStreamAction::capture);
        EXPECT_TRUE(task->launchAsynchronously());
    }
    EXPECT_TRUE(device.device().mainQueue().runUntil([&] { return !announced.empty(); }, 60));
    EXPECT_EQ(announced, "/bin/tool 1done\n");

    announced.clear();
    EXPECT_FALSE(OZTask::launchSyncTask(device.device(), "/bin/none", {}, true));
    EXPECT_EQ(announced, "") << "posted within the call";
    EXPECT_EQ(device.device().mainQueue().runPending(), 1U);
    EXPECT_EQ(announced, "/bin/none 1");
}

TEST(OZTask, GivesTheChildUsualSignalsTheDeviceAndNoDescriptors) {
    TemporaryDevice device;
    std::signal(SIGPIPE, SIG_IGN);
    // Bits 12 and 16 are those of SIGPIPE and SIGCHLD; the shell itself blocks nothing.
    const auto signals = run(device, "set -- $(grep -E 'Sig(Blk|Ign)' /proc/self/status)\n"
                                     "echo $2 $((0x$4 & 0x11000))");
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(signals->output(), "0000000000000000 0\n");
    EXPECT_EQ(run(device, "echo \"$OZVARINE_DEVICE\"")->output(), device.folder().string() + "\n");
    const int inherited = ::dup(STDIN_FILENO);
    EXPECT_EQ(run(device, "cd /proc/$$/fd; for fd in *; do [ $fd -lt 3 ] || readlink $fd; done")->output(),
              device.folder().string() + "/Tools/usr/bin/tool\n")
        << "the shell's own script alone";
    ::close(inherited);
}

TEST(OZTask, FindsToolsInTheOrderOfTheDirectories) {
    TemporaryDevice device;
    EXPECT_EQ(OZTask::launchPathForExecutable(device.device(), "tool"), std::nullopt);
    std::string expected;
    for (const char* directory :
         {"/usr/local/sbin", "/usr/local/bin", "/usr/sbin", "/usr/bin", "/sbin", "/bin"}) {
        expected = std::string(directory) + "/tool";
        device.addTool(expected, "exit 0");
        EXPECT_EQ(OZTask::launchPathForExecutable(device.device(), "tool"), expected);
    }
}

} // namespace
