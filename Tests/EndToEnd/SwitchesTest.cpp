#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::AllOf;
using testing::HasSubstr;
using tests::Outcome;
using tests::runProgram;
using tests::TemporaryFolder;

namespace {

// A plain tree that says no more than its version.
void makeTree(const TemporaryFolder& folder, const std::string& version) {
    folder.make("tree/System/Library/CoreServices/\ntree/var/mobile/\ntree/var/tmp/zz: junk");
    std::ofstream(folder.path("tree/System/Library/CoreServices/SystemVersion.plist"))
        << "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>ProductVersion</key><string>" << version
        << "</string></dict></plist>";
}

Outcome onTree(const TemporaryFolder& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--device", folder.path("tree")});
    return runProgram("ozvarine", arguments);
}

} // namespace

TEST(Launcher, RefusesWhatIsNoDeviceInOneLine) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    folder.make("file: x\nempty/\nbroken/Root/\nbroken/Device.plist: not a list");
    const struct {
        std::vector<std::string> arguments;
        const char* says;
    } cases[] = {
        {{"-clean"}, "no device given"},
        {{"--device"}, "--device needs a directory"},
        {{"--device", "/", "-clean"}, "this machine's own root"},
        {{"--device", "/proc/self/root", "-clean"}, "this machine's own root"},
        {{"--device", folder.path("missing"), "-clean"}, "there is no folder"},
        {{"--device", folder.path("file"), "-clean"}, "is not a folder"},
        {{"--device", folder.path("empty"), "-clean"}, "does not tell its iOS version"},
        {{"--device", folder.path("broken"), "-clean"}, "repair it or remove it"},
        {{"--device", folder.path("tree"), "-clean", "--dry-run"},
         "--dry-run belongs in front of the switch"},
        {{"-clean", "-printresults", "--device", folder.path("tree")}, "--device belongs in front"},
    };
    const auto before = folder.listing();
    for (const auto& [arguments, says] : cases) {
        const Outcome outcome = runProgram("ozvarine", arguments);
        EXPECT_EQ(outcome.status, 1) << says;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, HasSubstr(says));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
    EXPECT_EQ(folder.listing(), before);
}

TEST(Launcher, RefusesAFolderThatTheUserMayNotRead) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to become another user";
    }
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    ::chmod(folder.path().c_str(), 0755);
    ::chmod(folder.path("tree").c_str(), 0700);
    // The test program's own folder may be closed to the other user, so a copy of the program in an open
    // place runs.
    const std::string command =
        "cp -r '" + std::string(OZ_BINARY_DIRECTORY) + "/ozvarine' '" + folder.path("oz") +
        "' && setpriv --reuid=65534 --regid=65534 --clear-groups '" + folder.path("oz") + "' --device '" +
        folder.path("tree") + "' -clean 2>'" + folder.path("errors") + "'";
    EXPECT_NE(std::system(command.c_str()), 0);
    EXPECT_THAT(folder.content("errors"), HasSubstr("may not be read by this user"));
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
}

TEST(Launcher, TellsHelpAndVersion) {
    EXPECT_THAT(runProgram("ozvarine", {"--help"}).output,
                HasSubstr("usage: ozvarine [OPTION...] SWITCH..."));
    EXPECT_THAT(runProgram("ozvarine", {"--version"}).output, testing::MatchesRegex("ozvarine [0-9.]+\n"));
    EXPECT_EQ(runProgram("ozvarine", {"--help"}).status, 0);
}

const std::string settingsFolder = "tree/var/mobile/Library/Preferences";
const std::string settings = settingsFolder + "/com.ozdev90.ozvarine.plist";

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
        const Outcome outcome = onTree(folder, {"--reset-settings", "-clean"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(outcome.errors, testing::MatchesRegex("[^\n]*nothing to reset[^\n]*\n"));
        EXPECT_EQ(folder.content(settings), content);
        EXPECT_EQ(onTree(folder, {"-clean"}).errors, "");
    }
    // What is no file at all stays for its owner to look at.
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    folder.make(settings + "/kept: x");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"-clean"}, {"--reset-settings", "-clean"}}) {
        const Outcome outcome = onTree(folder, words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr("com.ozdev90.ozvarine.plist"));
        EXPECT_TRUE(folder.exists(settings + "/kept"));
        EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
    }
}

TEST(Switches, ATreeThatCannotBeWrittenIsOnlyAnalysed) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    ::chmod(folder.path().c_str(), 0755);
    const std::string tree = folder.path("tree");
    const std::string program = std::string(OZ_BINARY_DIRECTORY) + "/ozvarine";
    const auto inNamespace = [&](const std::string& command) {
        return tests::shell("unshare -rm sh -c \"mount --bind '" + tree + "' '" + tree + "' && mount -o " +
                            "remount,bind,ro '" + tree + "' && " + command + "\"");
    };
    const auto asOther = [](const std::string& command) {
        return tests::shell("setpriv --reuid=65534 --regid=65534 --clear-groups " + command);
    };
    const struct {
        const char* name;
        std::function<Outcome(const std::string&)> run;
        const char* reason;
    } worlds[] = {{"read-only mount", inNamespace, "Read-only file system"},
                  {"somebody else's", asOther, "Permission denied"}};
    const auto before = folder.listing();
    for (const auto& [name, run, reason] : worlds) {
        if (run("test -x '" + program + "'").status != 0 || run("unshare -r true").status != 0) {
            std::cout << name << ": not possible here\n";
            continue;
        }
        const auto ozvarine = [&](const std::string& words) {
            return run("'" + program + "' --device '" + tree + "' " + words);
        };
        for (const char* words : {"-clean -printresults", "-cli", "-restore-togglable-items"}) {
            const Outcome refused = ozvarine(words);
            EXPECT_EQ(refused.status, 73) << name << words << refused.output;
            EXPECT_THAT(refused.output, AllOf(HasSubstr(reason), HasSubstr("--dry-run --log FILE")));
            EXPECT_EQ(std::ranges::count(refused.output, '\n'), 1) << refused.output;
        }
        const Outcome analysis = ozvarine("--dry-run -clean -printresults");
        EXPECT_EQ(analysis.status, 0) << name;
        EXPECT_THAT(analysis.output, HasSubstr("success=true"));
        EXPECT_EQ(folder.listing(), before);
    }
    // One folder that can be written is enough.
    const std::string mobile = folder.path("tree/var/mobile");
    if (::chown(mobile.c_str(), 65534, 65534) == 0 && asOther("test -x '" + program + "'").status == 0) {
        EXPECT_NE(asOther("'" + program + "' --device '" + tree + "' -clean").status, 73);
    }
}

TEST(Switches, UnknownOnesGetTheUsageText) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    const Outcome outcome = onTree(folder, {"-nonsense", "-clean"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "ozvarine: illegal option -nonsense\nusage: ozvarine [-clean [-respring | -autorespring] "
              "| -cli | -respring | -restore-togglable-items]\n");
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
}

TEST(Switches, AnOlderPlatformIsRefusedBeforeAnythingRuns) {
    const TemporaryFolder folder;
    makeTree(folder, "7.1");
    const Outcome outcome = onTree(folder, {"-clean"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "This executable is not meant to be run on the current iOS version, aborting...\n");
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
}

TEST(Switches, CleanTakesOnlyTheWordBehindIt) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"-clean"},
                                                  {"-clean", "whatever"},
                                                  {"-clean", "whatever", "-printresults"}}) {
        const TemporaryFolder folder;
        makeTree(folder, "11.1");
        const Outcome outcome = onTree(folder, words);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.output + outcome.errors, "");
        EXPECT_FALSE(folder.exists("tree/var/tmp/zz"));
    }
}

TEST(Switches, ThePlainTreeIsTakenFromTheEnvironmentToo) {
    const TemporaryFolder folder;
    makeTree(folder, "8.4");
    const Outcome outcome =
        runProgram("ozvarine", {"-clean", "-printresults"}, {"OZVARINE_DEVICE=" + folder.path("tree")});
    EXPECT_THAT(
        outcome.output,
        testing::MatchesRegex("success=true\nfreed=[0-9.,]+ [KMG]?i?B\ndeleted=1\nshouldrespring=true\n"));
    EXPECT_FALSE(folder.exists("tree/var/tmp/zz"));
}
