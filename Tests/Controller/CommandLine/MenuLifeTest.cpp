#include "Tests/Controller/CommandLine/MenuTest.h"

#include <csignal>
#include <thread>

#include <sys/wait.h>

using namespace tests;

// How the menu lives with its terminal: signals, control characters, the end of input.

namespace {

std::string termiosBytes(const termios& settings) {
    return {reinterpret_cast<const char*>(&settings), sizeof settings};
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

TEST_F(MenuTest, StopsContinuesAndIsInterruptedAsAnyProgram) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    const auto settings = termiosBytes(terminal.settings());
    terminal.screen();
    ::kill(terminal.process(), SIGWINCH);
    expectScreen(terminal, "3", "more after main");

    terminal.type("\x1a");
    ASSERT_TRUE(terminal.stops());
    EXPECT_EQ(termiosBytes(terminal.settings()), settings);
    ::kill(terminal.process(), SIGCONT);
    terminal.enter("0");
    EXPECT_THAT(terminal.screen(), testing::EndsWith("0\n" + storedScreen("main")));

    // It waits for input without spinning.
    const double before = terminal.processorTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_LT(terminal.processorTime() - before, 0.05);

    terminal.type("\x03");
    const auto status = terminal.end();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status));
    EXPECT_EQ(WTERMSIG(*status), SIGINT);
}
