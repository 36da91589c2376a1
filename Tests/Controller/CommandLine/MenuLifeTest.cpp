#include "Tests/Controller/CommandLine/MenuTest.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace tests;

// How the menu lives with its terminal: signals, control characters, the end of input.

namespace {

std::string termiosBytes(const termios& settings) {
    return {reinterpret_cast<const char*>(&settings), sizeof settings};
}

// Stands in for an interactive shell with one job: takes over when the job stops, and continues it after a
// line.
int runAsJob(const std::function<int()>& program) {
    ::signal(SIGTTOU, SIG_IGN);
    const pid_t job = ::fork();
    if (job == 0) {
        ::setpgid(0, 0);
        ::tcsetpgrp(STDIN_FILENO, ::getpid());
        ::signal(SIGTTOU, SIG_DFL);
        ::_exit(program());
    }
    int status = 0;
    while (::waitpid(job, &status, WUNTRACED) == job && WIFSTOPPED(status)) {
        ::tcsetpgrp(STDIN_FILENO, ::getpgrp());
        constexpr std::string_view text = "Stopped. Press [Enter] to continue . . . ";
        char line[64];
        if (::write(STDOUT_FILENO, text.data(), text.size()) < 0 ||
            ::read(STDIN_FILENO, line, sizeof line) < 0) {
            return 126;
        }
        ::tcsetpgrp(STDIN_FILENO, job);
        ::kill(job, SIGCONT);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

TEST_F(MenuTest, EndsQuietlyAtTheEndOfInput) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    const auto settings = termiosBytes(terminal.settings());
    terminal.screen();
    for (const char* line : {"9", "1", "16", "1"}) {
        terminal.enter(line);
        terminal.screen();
    }
    terminal.type("\x04");
    EXPECT_EQ(terminal.end(), 0);
    EXPECT_EQ(termiosBytes(terminal.settings()), settings);
    EXPECT_TRUE(platform::valueAt<bool>(choices(), "testMode"));
    EXPECT_TRUE(platform::valueAt<platform::Array>(choices(), "languagesToRemove"));
}

TEST_F(MenuTest, EndsWithItsConnection) {
    create();
    // Also where the program was started so that a hang-up alone does not end it.
    for (const auto disposition : {SIG_DFL, SIG_IGN}) {
        const auto old = ::signal(SIGHUP, disposition);
        Terminal terminal("ozvarine", menuArguments());
        ::signal(SIGHUP, old);
        terminal.screen();
        for (const char* line : {"9", "1", "16", "1"}) {
            terminal.enter(line);
            terminal.screen();
        }
        terminal.hangUp();
        EXPECT_TRUE(terminal.end()) << "the program goes on without a terminal";
        EXPECT_TRUE(platform::valueAt<bool>(choices(), "testMode"));
        EXPECT_TRUE(platform::valueAt<platform::Array>(choices(), "languagesToRemove"));
        std::filesystem::remove(path("/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist"));
    }
}

TEST_F(MenuTest, HasTheDeviceForItself) {
    create();
    const auto run = [&](std::vector<std::string> words, const std::string& directory) {
        words.insert(words.begin(), {"--device", directory});
        return runProgram("ozvarine", words);
    };
    std::optional<Terminal> terminal(std::in_place, "ozvarine", menuArguments());
    terminal->screen();
    const auto before = snapshotOf(path(""));
    const std::string holder = "process " + std::to_string(terminal->process()) + " of user ";
    for (const std::vector<std::string>& words : {std::vector<std::string>{"-clean"},
                                                  {"--dry-run", "-clean"},
                                                  {"-cli"},
                                                  {"-restore-togglable-items"}}) {
        // By the tree alone it is the same device.
        for (const auto& directory : {device, path("")}) {
            const auto refused = run(words, directory);
            EXPECT_EQ(refused.status, 1) << words.front();
            EXPECT_THAT(refused.errors,
                        testing::AllOf(testing::HasSubstr(holder), testing::ContainsRegex("since 20[0-9-]+ "),
                                       testing::HasSubstr("--dry-run --log")));
        }
    }
    // The device's own tool, which puts a run's summary into the log.
    const std::filesystem::path tool = device + "/Tools/usr/bin/sed";
    std::filesystem::create_directories(tool.parent_path());
    std::ofstream(tool) << "#!/bin/sh\necho >> '" << folder.path("edits") << "'\n";
    std::filesystem::permissions(tool, std::filesystem::perms(0755));
    const auto looked = run({"--dry-run", "--log", folder.path("log"), "-clean", "-printresults"}, device);
    EXPECT_THAT(looked.output, testing::HasSubstr("success=true"));
    // One line: the log that was asked for is whole.
    EXPECT_THAT(looked.errors, testing::HasSubstr(holder));
    EXPECT_EQ(std::ranges::count(looked.errors, '\n'), 1) << looked.errors;
    EXPECT_EQ(run({"-printsettings"}, device).status, 0);
    EXPECT_THAT(differences(before, snapshotOf(path(""))), testing::IsEmpty());
    EXPECT_FALSE(folder.exists("edits"));

    ::kill(terminal->process(), SIGKILL);
    EXPECT_TRUE(terminal->end());
    EXPECT_EQ(run({"-clean"}, device).status, 0);
    EXPECT_TRUE(folder.exists("edits"));
}

TEST_F(MenuTest, ExcludesRunsOfOtherUsers) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to become another user";
    }
    create();
    const std::string asOther = "chmod 755 '" + folder.path() + "' && chown -R 65534 '" + device + "' && " +
                                tests::copyOfProgram(folder.path("build")) +
                                " && setpriv --reuid=65534 --regid=65534 --clear-groups '" +
                                folder.path("build/bin/ozvarine") + "' --device '" + device + "' ";
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    const auto refused = shell(asOther + "-clean");
    if (refused.output.contains("Failed to gain root")) {
        GTEST_SKIP() << "ordinary users may make no user namespace here";
    }
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.output,
                testing::HasSubstr("process " + std::to_string(terminal.process()) + ", running since"));
}

TEST_F(MenuTest, WaitsWithoutSpinningAndIsInterruptedAsAnyProgram) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    ::kill(terminal.process(), SIGWINCH);
    expectScreen(terminal, "3", "more after main");
    const double before = terminal.processorTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_LT(terminal.processorTime() - before, 0.05);

    terminal.type("\x03");
    const auto status = terminal.end();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status));
    EXPECT_EQ(WTERMSIG(*status), SIGINT);
}

TEST_F(MenuTest, StopsAndContinuesAsAJobOfAShell) {
    create();
    Terminal terminal([&] { return runAsJob([&] { return execute("ozvarine", menuArguments()); }); });
    const auto settings = termiosBytes(terminal.settings());
    EXPECT_EQ(terminal.screen(), storedScreen("main"));
    expectScreen(terminal, "3", "more after main");
    terminal.type("\x1a");
    EXPECT_EQ(terminal.screen(), "^ZStopped. Press [Enter] to continue . . . <cursor>");
    EXPECT_EQ(termiosBytes(terminal.settings()), settings);
    terminal.enter("");
    terminal.enter("0");
    EXPECT_EQ(terminal.screen(), "\n0\n" + storedScreen("main"));
    terminal.enter("0");
    EXPECT_EQ(terminal.end(), 0);
}
