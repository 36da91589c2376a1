#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(Switches, NothingIsCleanedByChoicesThatCannotBeRead) {
    const TemporaryFolder folder;
    makeTree(folder, "11.1");
    const std::string settings = "tree/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";
    folder.make(settings + "/");
    const Outcome outcome = onTree(folder, {"-clean", "-printresults"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, HasSubstr("nothing was cleaned"));
    EXPECT_TRUE(folder.exists("tree/var/tmp/zz"));

    // What can be read and is no list of choices says nothing: the defaults serve.
    std::filesystem::remove(folder.path(settings));
    folder.make(settings + ": no list");
    const Outcome withDefaults = onTree(folder, {"-clean"});
    EXPECT_EQ(withDefaults.status, 0);
    EXPECT_THAT(withDefaults.errors, HasSubstr("the defaults serve"));
    EXPECT_FALSE(folder.exists("tree/var/tmp/zz"));
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
