#include "Tests/EndToEnd/PlainTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::AllOf;
using testing::HasSubstr;
using tests::makeTree;
using tests::onTree;
using tests::Outcome;
using tests::runProgram;
using tests::TemporaryFolder;

TEST(Launcher, RefusesWhatIsNoDeviceInOneLine) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    folder.make("file: x\nempty/\nbroken/Root/\nbroken/Device.plist: not a list\n"
                "folder/Root/\nfolder/Device.plist/\npipe/Root/\npipe/Device.plist |\n"
                "lost/Root/\nlost/Device.plist -> none\nrootless/Device.plist: <plist/>");
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
        {{"--device", folder.path("folder"), "-clean"}, "Device.plist is no regular file"},
        {{"--device", folder.path("pipe"), "-clean"}, "Device.plist is no regular file"},
        {{"--device", folder.path("lost"), "-clean"}, "Device.plist is a link that leads nowhere"},
        {{"--device", folder.path("rootless"), "-clean"}, "has a Device.plist and no folder Root"},
        {{"--device", folder.path("tree"), "-clean", "--dry-run"},
         "--dry-run belongs in front of the switch"},
        {{"-clean", "-printresults", "--device", folder.path("tree")}, "--device belongs in front"},
        {{}, "ozvarine --help lists"},
        {{"--device=" + folder.path("tree")}, "no switch given"},
        {{"--device=", "-clean"}, "--device needs a directory"},
        {{"--device", "a", "--device", "b", "-clean"}, "--device is given twice"},
        {{"--dry-runs", "-clean"}, "unknown option --dry-runs"},
        {{"--dry-run=yes", "-clean"}, "--dry-run takes no value"},
        {{"--device", folder.path("tree"), "-clean", "--dry-runs"}, "--dry-runs behind -clean means nothing"},
        {{"--device", folder.path("tree"), "-clean", "-dry-run"}, "-dry-run behind -clean"},
        {{"--device", folder.path("tree"), "-clean", "-n"}, "-n behind -clean"},
        {{"--device", folder.path("tree"), "-clean", "-help"}, "-help behind -clean"},
        {{"--device", folder.path("tree"), "-clean", "-respring", "-h"}, "-h belongs in front"},
        {{"--device", folder.path("tree"), "-clean", "--help"}, "--help belongs in front"},
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

TEST(Launcher, TakesAVersionAndAModelThatTheTreeDoesNotTell) {
    const TemporaryFolder folder;
    folder.make("bare/var/mobile/\nfolder/Root/var/mobile/\n"
                "folder/Device.plist: <plist version=\"1.0\"><dict><key>HardwareModel</key>"
                "<string>iPad5,4</string></dict></plist>");
    makeTree(folder, "12.4");
    const std::string warning =
        "ozvarine: the device has iOS 12.4, which is newer than 11, the newest that this "
        "program knows; it goes on as on iOS 11\n";
    const struct {
        const char* tree;
        std::vector<std::string> words;
        int status;
        std::string errors;
    } cases[] = {
        {"bare", {"--ios", "9.3.5", "-clean"}, 0, ""},
        {"bare", {"--ios", "9.3.5", "--model", "iPad5,4", "-clean"}, 0, ""},
        {"bare", {"--ios", "nine", "-clean"}, 1, "\"nine\" is no iOS version from 4 on"},
        {"bare", {"--ios", "3.1", "-clean"}, 1, "\"3.1\" is no iOS version from 4 on"},
        {"bare", {"--ios", "9", "--model", "J81AP", "-clean"}, 1, "J81AP is no hardware model"},
        {"folder", {"--ios", "9", "--model", "iPad5,4", "-clean"}, 0, ""},
        {"folder", {"--ios", "9", "--model", "iPhone9,3", "-clean"}, 1, "tells iPad5,4"},
        {"tree", {"--ios", "9.3.5", "-clean"}, 1, "tells iOS 12.4 as its version, and --ios says 9.3.5"},
        {"tree", {"--ios", "12.4.0", "-clean"}, 0, warning},
        {"tree", {"--ios", "12.4", "-printsettings"}, 0, ""},
    };
    for (const auto& [tree, words, status, errors] : cases) {
        std::vector<std::string> arguments = {"--device", folder.path(tree)};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const Outcome outcome = runProgram("ozvarine", arguments);
        EXPECT_EQ(outcome.status, status) << words[0] << words[1];
        EXPECT_THAT(outcome.errors,
                    errors.empty() ? testing::IsEmpty() : testing::Matcher<std::string>(HasSubstr(errors)));
        EXPECT_LE(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
}

TEST(Launcher, ChangesNothingWhereTheDataPartitionIsMissing) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    std::filesystem::remove(folder.path("tree/var/mobile"));
    const auto before = folder.listing();
    for (const std::vector<std::string>& words : {std::vector<std::string>{"-clean"},
                                                  {"--dry-run", "-clean", "-printresults"},
                                                  {"-restore-togglable-items"},
                                                  {"-cli"}}) {
        std::vector<std::string> arguments = {"--device", folder.path("tree")};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const Outcome outcome = runProgram("ozvarine", arguments);
        EXPECT_EQ(outcome.status, 1) << words.back();
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, HasSubstr("the data partition is missing"));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
    EXPECT_EQ(folder.listing(), before);
    EXPECT_EQ(onTree(folder, {"-printsettings"}).status, 0);
    // Choices that are stored in the one would not be seen in the other.
    folder.make("tree/private/var/mobile/");
    EXPECT_THAT(onTree(folder, {"-clean"}).errors, HasSubstr("var is not private/var"));
    folder.make("tree/var/mobile/");
    EXPECT_THAT(onTree(folder, {"-clean"}).errors, HasSubstr("var is not private/var"));
    std::filesystem::remove_all(folder.path("tree/var"));
    EXPECT_EQ(onTree(folder, {"-clean"}).status, 0);
    EXPECT_FALSE(folder.exists("tree/var"));
    folder.make("tree/var -> private/var");
    if (::lchown(folder.path("tree/var").c_str(), 501, 501) == 0) {
        EXPECT_THAT(onTree(folder, {"-clean"}).errors, HasSubstr("belongs to another user"));
    }
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
    const std::string command = tests::copyOfProgram(folder.path("build")) +
                                " && setpriv --reuid=65534 --regid=65534 --clear-groups " +
                                folder.path("build/bin/ozvarine") + " --device " + folder.path("tree") +
                                " -clean 2>" + folder.path("errors");
    EXPECT_NE(std::system(command.c_str()), 0);
    EXPECT_THAT(folder.content("errors"), HasSubstr("may not be read by this user"));
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
}

TEST(Launcher, TellsHelpAndVersion) {
    EXPECT_THAT(runProgram("ozvarine", {"--help"}).output,
                HasSubstr("usage: ozvarine [OPTION...] SWITCH..."));
    EXPECT_THAT(runProgram("ozvarine", {"--version"}).output, testing::MatchesRegex("ozvarine [0-9.]+\n"));
    EXPECT_EQ(runProgram("ozvarine", {"--help"}).status, 0);
    EXPECT_EQ(runProgram("ozvarine", {"-h"}).output, runProgram("ozvarine", {"--help"}).output);
}

// A helper that is missing would leave whole steps out of a cleanup.
TEST(Launcher, NamesWhatIsMissingBesideItselfBeforeAnythingIsDone) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    const std::string build = folder.path("build");
    tests::shell(tests::copyOfProgram(folder.path("build")));
    const std::string clean = build + "/bin/ozvarine --device " + folder.path("tree") + " -clean; echo $?";
    for (const std::string part : {"libexec/ozenter", "libexec/libozenter.so", "libexec/apt.conf",
                                   "share/ozvarine/English.strings", "share/ozvarine/lang"}) {
        const std::string file = build + "/" + part;
        std::filesystem::rename(file, file + ".away");
        EXPECT_THAT(tests::shell(clean).output,
                    testing::MatchesRegex("ozvarine: " + file + " is missing [^\n]*\n1\n"));
        std::filesystem::rename(file + ".away", file);
    }
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
    EXPECT_EQ(tests::shell(clean).output, "0\n");
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
              "| -cli | -respring | -restore-togglable-items]\nozvarine --help lists options and switches\n");
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));
}

TEST(Switches, EachExecutableServesItsGenerationAndNewerOnesTheLauncherAll) {
    const std::vector<std::string> names = {"iOS4_Ozvarine", "iOS6_Ozvarine", "iOS7_Ozvarine",
                                            "iOS8_Ozvarine"};
    const struct {
        const char* version;
        size_t served;
    } cases[] = {{"4.0", 1}, {"5.1", 1}, {"6.0", 2}, {"6.1.3", 2},
                 {"7.0", 3}, {"7.1", 3}, {"8.0", 4}, {"11.1", 4}};
    for (const auto& [version, served] : cases) {
        const TemporaryFolder folder;
        makeTree(folder, version);
        for (size_t index = names.size(); index-- > 0;) {
            const Outcome outcome =
                runProgram("../libexec/" + names[index], {"--device", folder.path("tree"), "-clean"});
            EXPECT_EQ(outcome.status, index < served ? 0 : 1) << version << names[index];
            EXPECT_EQ(outcome.errors,
                      index < served ? ""
                                     : "This executable is not meant to be run on the current iOS version, "
                                       "aborting...\n");
            EXPECT_EQ(folder.exists("tree/var/tmp/zz"), index >= served) << version << names[index];
            folder.make("tree/var/tmp/zz: junk");
        }
        EXPECT_EQ(onTree(folder, {"-clean"}).status, 0) << version;
        EXPECT_FALSE(folder.exists("tree/var/tmp/zz")) << version;
    }
}

TEST(Switches, OutputThatCannotBeWrittenIsAFailureOfEachSwitch) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    const std::string program = OZ_BINARY_DIRECTORY "/ozvarine --device " + folder.path("tree");
    for (const std::string words : {" -printsettings", " -clean -printresults", " --help", " --version"}) {
        // The last one is a pipe whose reader has gone.
        for (const std::string stream : {" >/dev/full", " >&-", " >&3"}) {
            const std::string line =
                "bash -c 'exec 3> >(:); sleep 0.1; " + program + words + stream + "; echo $?'";
            EXPECT_THAT(tests::shell(line).output,
                        testing::EndsWith("could be written; what the switch does was "
                                          "done all the same\n1\n"))
                << line;
        }
    }
    EXPECT_EQ(tests::shell(program + " -clean >&- 2>&-; echo $?").output, "0\n");
    EXPECT_EQ(tests::shell(program + " -clean -printresults >&- 2>&-; echo $?").output, "1\n");
    EXPECT_THAT(tests::shell("ulimit -f 0; " + program + " -clean 2>&1; echo $?").output,
                AllOf(HasSubstr("File too large"), testing::EndsWith("\n0\n")));
}

TEST(Switches, ARunWithoutTheMeansToLookIsNotOneThatFoundNothing) {
    const TemporaryFolder folder;
    folder.make("device/Tools/usr/bin/find: #!/bin/sh\n");
    makeTree(folder, "11.1");
    std::filesystem::rename(folder.path("tree"), folder.path("device/Root"));
    std::ofstream(folder.path("device/Tools/usr/bin/find")) << "#!/bin/sh\nexit 126\n";
    ::chmod(folder.path("device/Tools/usr/bin/find").c_str(), 0755);
    const std::string program = OZ_BINARY_DIRECTORY "/ozvarine --device " + folder.path("device");
    const std::string says = "A search was not made in full (\"find\" ended with status 126): what it would "
                             "have found stayed.\n";
    EXPECT_EQ(tests::shell(program + " -clean 2>&1; echo $?").output, says + "0\n");
    EXPECT_EQ(tests::shell(program + " --strict -clean 2>&1; echo $?").output, says + "1\n");
    EXPECT_THAT(tests::shell("ulimit -n 12; " + program + " -clean 2>&1; echo $?").output,
                AllOf(HasSubstr("too few files may be open"), testing::EndsWith("\n1\n")));
    // As many as anybody may ask for are taken.
    EXPECT_EQ(tests::shell("ulimit -Sn 12; " + program + " -clean 2>&1; echo $?").output, says + "0\n");
}

TEST(Switches, TellWhereThereWasNothingToAsk) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    for (const std::string word : {"-respring", "-restore-togglable-items"}) {
        const Outcome outcome = onTree(folder, {word});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.errors, HasSubstr("there was nothing to ask")) << word;
    }
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
