// What the switches do by a file of settings that is damaged, empty or no file.

#include "Tests/EndToEnd/PlainTree.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::HasSubstr;
using tests::makeTree;
using tests::onTree;
using tests::Outcome;
using tests::TemporaryFolder;

namespace {

const std::string settingsFolder = "tree/var/mobile/Library/Preferences";
const std::string settings = settingsFolder + "/com.ozdev90.ozvarine.plist";

} // namespace

TEST(Switches, NothingIsDoneBySettingsThatCannotBeRead) {
    const std::string list = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
    const struct {
        const char* name;
        std::string content;
        const char* reason;
    } damages[] = {
        {"cut off", list + "<dict><key>testMode</key><true/>", "no whole property list"},
        {"text", "no list", "cannot be read"},
        {"space", " \n", "no whole property list"},
        {"zeros", std::string(512, '\0'), "no whole property list"},
        {"another list", list + "<array><true/></array></plist>", "no dictionary"},
    };
    for (const auto& [name, content, reason] : damages) {
        const TemporaryFolder folder;
        makeTree(folder, "11.1");
        folder.make(settingsFolder + "/");
        std::ofstream(folder.path(settings)) << content;
        const auto before = folder.listing();
        for (const std::vector<std::string>& words : {std::vector<std::string>{"-clean", "-printresults"},
                                                      {"--dry-run", "-clean"},
                                                      {"-cli"},
                                                      {"-restore-togglable-items"}}) {
            const Outcome outcome = onTree(folder, words);
            EXPECT_EQ(folder.listing(), before) << name << words.front();
            EXPECT_EQ(outcome.status, 1) << name << words.front();
            EXPECT_EQ(outcome.output, "");
            EXPECT_THAT(outcome.errors, AllOf(HasSubstr("com.ozdev90.ozvarine.plist"), HasSubstr(reason),
                                              HasSubstr("--reset-settings")));
            EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        }
        // As often as asked, even within one second; nothing that was kept is replaced.
        for (size_t kept = 1; kept <= 3; ++kept) {
            std::ofstream(folder.path(settings)) << content;
            const Outcome reset = onTree(folder, {"--reset-settings", "-clean"});
            EXPECT_EQ(reset.status, 0);
            EXPECT_THAT(reset.errors, HasSubstr("com.ozdev90.ozvarine.plist.damaged-20"));
            EXPECT_EQ(std::ranges::count_if(folder.listing(),
                                            [](auto& line) { return line.contains("plist.damaged-"); }),
                      kept);
            EXPECT_FALSE(folder.exists(settings));
        }
        EXPECT_FALSE(folder.exists("tree/var/tmp/zz"));
    }
}

TEST(Switches, SettingsThatAreFineAreNotReset) {
    for (const std::string content : {"", "<plist version=\"1.0\"><dict/></plist>"}) {
        const TemporaryFolder folder;
        makeTree(folder, "11.1");
        folder.make(settingsFolder + "/");
        std::ofstream(folder.path(settings)) << content;
        const char* empty = "The settings in [^\n]*plist are empty; the defaults serve\\.\n";
        const Outcome outcome = onTree(folder, {"--reset-settings", "-clean"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(outcome.errors,
                    testing::MatchesRegex(content.empty() ? empty : "[^\n]*nothing to reset[^\n]*\n"));
        EXPECT_EQ(folder.content(settings), content);
        EXPECT_THAT(onTree(folder, {"-clean"}).errors, testing::MatchesRegex(content.empty() ? empty : ""));
    }
}

// Nor does a list that lies elsewhere by now count as none: the choices were made.
TEST(Switches, SettingsThatAreNoFileStayForTheirOwnerToLookAt) {
    const struct {
        std::string settings;
        const char* reason;
        int statusOfReset;
    } cases[] = {{settings + "/kept: x", "Is a directory", 1},
                 {settings + " |", "it is no regular file", 1},
                 {settings + " -> /none", "it is a link that leads nowhere", 0},
                 {settings + " -> com.ozdev90.ozvarine.plist", "Too many levels of symbolic links", 0}};
    for (const auto& [line, reason, statusOfReset] : cases) {
        const TemporaryFolder folder;
        makeTree(folder, "11.1");
        folder.make(line);
        const auto before = folder.listing();
        const Outcome refused = onTree(folder, {"-clean"});
        EXPECT_EQ(refused.status, 1);
        EXPECT_THAT(refused.errors, AllOf(HasSubstr("com.ozdev90.ozvarine.plist"), HasSubstr(reason)));
        EXPECT_EQ(folder.listing(), before);
        const Outcome reset = onTree(folder, {"--reset-settings", "-clean"});
        EXPECT_EQ(reset.status, statusOfReset) << reset.errors;
        EXPECT_THAT(reset.errors, HasSubstr(reason));
        EXPECT_EQ(folder.exists("tree/var/tmp/zz"), statusOfReset == 1);
        EXPECT_EQ(folder.listing() == before, statusOfReset == 1);
    }
}
