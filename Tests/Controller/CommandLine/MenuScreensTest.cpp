#include "Tests/Controller/CommandLine/MenuTest.h"

#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <sys/wait.h>

using namespace tests;
using platform::Array;
using platform::Dictionary;
using platform::valueAt;

namespace {

Dictionary settingsIn(const Dictionary& choices) {
    const auto* settings = valueAt<Dictionary>(choices, "cleanupSettings");
    return settings == nullptr ? Dictionary() : *settings;
}

bool isOn(const Dictionary& choices, std::string_view key) {
    const auto settings = settingsIn(choices);
    const auto found = settings.find(key);
    return found != settings.end() && found->second.boolValue() == true;
}

} // namespace

TEST_F(MenuTest, LeadsThroughItsScreensAndBack) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    EXPECT_EQ(terminal.screen(), storedScreen("main"));
    expectScreen(terminal, "7", "main after another");
    expectScreen(terminal, "-1", "main after another");
    expectScreen(terminal, "3", "more after main");
    expectScreen(terminal, "14", "more");
    expectScreen(terminal, "-3", "more");
    expectScreen(terminal, "0", "main");
    expectScreen(terminal, "9", "settings after main");
    expectScreen(terminal, "17", "settings");
    expectScreen(terminal, "-2", "settings");
    expectScreen(terminal, "14", "file types");
    expectScreen(terminal, "", "settings");
    expectScreen(terminal, "15", "excluded apps");
    expectScreen(terminal, "", "settings");
    expectScreen(terminal, "16", "languages");
    expectScreen(terminal, "-1", "languages");
    expectScreen(terminal, "0", "settings");
    expectScreen(terminal, "0", "main");
    terminal.enter("0");
    EXPECT_EQ(terminal.end(), 0);
}

TEST_F(MenuTest, FlipsSettingsAndStoresEachAtOnce) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    expectScreen(terminal, "9", "settings after main");
    const Dictionary before = choices();
    EXPECT_TRUE(before.empty());
    const auto choose = [&](const char* line) {
        terminal.enter(line);
        terminal.screen();
        return choices();
    };
    EXPECT_EQ(valueAt<bool>(choose("1"), "testMode") != nullptr && *valueAt<bool>(choices(), "testMode"),
              true);
    EXPECT_EQ(settingsIn(choose("2"))["ATTACHMENTS"].unsignedValue(), 1U);
    EXPECT_EQ(settingsIn(choose("2"))["ATTACHMENTS"].unsignedValue(), 2U);
    EXPECT_EQ(settingsIn(choose("2"))["ATTACHMENTS"].unsignedValue(), 0U);
    EXPECT_EQ(settingsIn(choose("2"))["ATTACHMENTS"].unsignedValue(), 1U);

    // The labels know nothing of the step for battery data, so that those behind it mean the step before
    // theirs.
    EXPECT_FALSE(isOn(choose("3"), "SAFARI"));
    EXPECT_FALSE(isOn(choose("6"), "BATTERYDATA"));
    EXPECT_TRUE(isOn(choices(), "CYDIA"));
    EXPECT_FALSE(isOn(choose("7"), "CYDIA"));
    EXPECT_FALSE(isOn(choose("13"), "FILETYPECLEANUP"));
    EXPECT_FALSE(isOn(choices(), "CUSTOMFILES"));
    expectScreen(terminal, "8", "settings changed");
    EXPECT_TRUE(isOn(choices(), "CYDIASOURCES"));
    expectScreen(terminal, "0", "main");
}

TEST_F(MenuTest, TakesFileTypes) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("9");
    terminal.screen();
    const auto typesAfter = [&](const std::string& line) {
        terminal.enter("14");
        terminal.screen();
        terminal.enter(line);
        terminal.screen();
        const Dictionary stored = choices();
        const auto* types = valueAt<Array>(stored, "fileTypes");
        return types == nullptr ? Array() : *types;
    };
    const Array defaults = {"log", "logs", "tmp", "temp"};
    EXPECT_EQ(typesAfter(""), defaults);
    EXPECT_EQ(typesAfter("  bak\t old "), (Array{"bak", "old"}));
    EXPECT_EQ(typesAfter("PREV orig png"), (Array{"orig", "bak", "old"}));
    EXPECT_EQ(typesAfter("b\xc3\xa4k\norig"), Array{"orig"}) << "a line with another script is passed over";
    EXPECT_EQ(typesAfter("prev PREV"), (Array{"prev", "orig"}));
    EXPECT_EQ(typesAfter("DEL"), defaults);
}

TEST_F(MenuTest, TakesExcludedApps) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("9");
    terminal.screen();
    const auto excludedAfter = [&](const std::string& line) {
        terminal.enter("15");
        terminal.screen();
        terminal.enter(line);
        const std::string screen = terminal.screen();
        const size_t start = screen.find("Excluded apps: <yellow>") + 23;
        return screen.substr(start, screen.find("<reset>", start) - start);
    };
    EXPECT_EQ(excludedAfter("com.saurik.Cydia no.such.app"), "com.saurik.Cydia");
    EXPECT_EQ(excludedAfter("com.apple.mobilesafari"), "com.apple.mobilesafari com.saurik.Cydia");
    const Dictionary stored = choices();
    const auto* masks = valueAt<Dictionary>(stored, "excludedApps");
    ASSERT_NE(masks, nullptr);
    EXPECT_EQ(masks->at("com.saurik.Cydia").unsignedValue(), 7U);
    EXPECT_EQ(excludedAfter("PREV"), "com.apple.mobilesafari com.saurik.Cydia");
    EXPECT_EQ(excludedAfter("DEL"), "");
    EXPECT_EQ(excludedAfter("PREV"), "");
}

TEST_F(MenuTest, SelectsLanguagesAndThenOffersToRemoveThem) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("3");
    terminal.screen();
    expectScreen(terminal, "9", "no language selected");
    expectScreen(terminal, "", "more");
    terminal.enter("0");
    terminal.screen();
    terminal.enter("9");
    terminal.screen();
    expectScreen(terminal, "16", "languages");
    expectScreen(terminal, "2", "languages with the second");
    EXPECT_EQ(valueAt<Array>(choices(), "languagesToRemove")->size(), 1U) << "stored at once";
    expectScreen(terminal, "2", "languages");
    const std::string all = std::to_string(std::ranges::count(storedScreen("languages"), '\n') - 6);
    expectScreen(terminal, all, "languages with all");
    expectScreen(terminal, all, "languages");
    terminal.enter("1");
    terminal.screen();
    terminal.enter("0");
    terminal.screen();
    terminal.enter("0");
    terminal.screen();
    terminal.enter("3");
    terminal.screen();
    expectWork(terminal, "9", "Removing languages", "results with size");
    expectScreen(terminal, "", "more");
}

TEST_F(MenuTest, ShowsWarningsOnTheNextScreenAndWhatIsStored) {
    create();
    {
        Terminal terminal("ozvarine", menuArguments());
        terminal.screen();
        for (const char* line : {"9", "1", "3", "16", "1", "0", "15", "com.saurik.Cydia", "14", "bak"}) {
            terminal.enter(line);
            terminal.screen();
        }
    }
    const Dictionary before = choices();
    Terminal terminal([&] {
        // As on a full disk.
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit none{.rlim_cur = 0, .rlim_max = 0};
        return ::setrlimit(RLIMIT_FSIZE, &none) == 0 ? execute("ozvarine", menuArguments()) : 1;
    });
    terminal.screen();
    const std::string heading = "<clear><yellow>Settings:<reset>\n\n";
    const std::string warning =
        "<red>The settings cannot be saved to /var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist "
        "(File too large).<reset>\n\n";
    terminal.enter("9");
    std::string stored = terminal.screen();
    stored.erase(0, stored.find(heading) + heading.size());
    EXPECT_THAT(stored, testing::HasSubstr("com.saurik.Cydia"));
    const std::vector<std::string> changes[] = {{"1"}, {"2"}, {"3"}, {"14", "DEL"}, {"15", "DEL"}};
    for (const auto& lines : changes) {
        for (const auto& line : lines) {
            terminal.enter(line);
            if (line != lines.back()) {
                terminal.screen();
            }
        }
        EXPECT_EQ(terminal.screen(), lines.back() + "\n" + heading + warning + stored) << lines.front();
    }
    // It says so once a failure, and not again.
    terminal.enter("17");
    EXPECT_EQ(terminal.screen(), "17\n" + heading + stored);
    terminal.enter("16");
    const std::string languages = terminal.screen();
    EXPECT_THAT(languages, testing::HasSubstr("<green>v<reset>"));
    terminal.enter("1");
    std::string again = terminal.screen();
    ASSERT_THAT(again, testing::HasSubstr("Languages to remove:<reset>\n\n" + warning));
    again.erase(again.find(warning), warning.size());
    EXPECT_EQ(again.substr(1), languages.substr(2)) << "all but the echo of what was entered";
    EXPECT_EQ(choices(), before);
}

TEST_F(MenuTest, ShowsTheWarningsOfWorkWithItsResults) {
    create();
    std::ofstream(path("/var/mobile/Library/Preferences/.GlobalPreferences.plist")) << "damaged";
    Terminal terminal("ozvarine", menuArguments());
    for (const char* line : {"9", "16", "1", "0", "0", "3", "9"}) {
        terminal.screen();
        terminal.enter(line);
    }
    EXPECT_THAT(
        terminal.screen(),
        testing::HasSubstr("<green>Operation completed!<reset>\n\n<red>Nobody can tell the language in "
                           "use, since /var/mobile/Library/Preferences/.GlobalPreferences.plist cannot "
                           "be read; no language was removed.<reset>\n\nProcessed files: "));
}

TEST_F(MenuTest, DropsLinesThatAreNoNumber) {
    create();
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("1 2");
    terminal.enter("");
    terminal.enter("0x1");
    terminal.enter("\xc3\xa9");
    terminal.enter("1\xc2\xa0");
    terminal.enter(std::string(4000, '1') + "a");
    terminal.enter("+-5");
    terminal.enter("  007\t");
    const std::string screen = terminal.screen();
    EXPECT_THAT(screen, testing::EndsWith("\n" + storedScreen("main after another")));
    EXPECT_EQ(std::ranges::count(screen, '<') - std::ranges::count(storedScreen("main after another"), '<'),
              0);
    // Too big for any menu, but a number.
    expectScreen(terminal, std::string(100, '9'), "main after another");
    expectScreen(terminal, "+3", "more after main");
}

TEST_F(MenuTest, StartsOnlyAtATerminalAndNeverForADryRun) {
    create();
    const auto outcome = runProgram("ozvarine", menuArguments());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "The Ozvarine command line interface can only be invoked through an interactive terminal.\n");
    EXPECT_EQ(outcome.output, "");
    Terminal dryRun("ozvarine", {"--device", device, "--dry-run", "-cli"});
    const auto status = dryRun.end();
    EXPECT_EQ(status ? WEXITSTATUS(*status) : -1, 1);
}
