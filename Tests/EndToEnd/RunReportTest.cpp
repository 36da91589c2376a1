// What the built program tells of a run beside its record: items that stayed, and the log on the host.

#include "Tests/EndToEnd/PlainTree.h"
#include "Tests/Support/Mounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using testing::HasSubstr;
using testing::MatchesRegex;
using tests::makeTree;
using tests::onTree;
using tests::Outcome;
using tests::TemporaryFolder;

namespace {

std::string described(const Outcome& outcome) {
    return std::to_string(outcome.status) + "\n" + outcome.output + outcome.errors;
}

} // namespace

TEST(RunReport, ItemsThatStayedFailAStrictRunAlone) {
    // What a cleanup freed is the file system's own count, which other programs change too.
    const std::string record = "success=true\nfreed=[^\n]*\ndeleted=1\nshouldrespring=true\n";
    const std::string line = "1 of 1 items stayed: Read-only file system\\.\n";
    const struct {
        std::vector<std::string> arguments;
        std::string outcome;
    } cases[] = {
        {{"-clean", "-printresults"}, "0\n" + record + line},
        {{"--strict", "-clean", "-printresults"}, "1\n" + record + line},
        {{"--strict", "--dry-run", "-clean"}, "0\n"},
    };
    for (const auto& row : cases) {
        const TemporaryFolder folder;
        makeTree(folder);
        const auto outcome = tests::inMountNamespace([&] {
            tests::makeReadOnly(folder.path("tree/var/tmp"));
            return described(onTree(folder, row.arguments));
        });
        if (!outcome) {
            GTEST_SKIP() << "needs a namespace to mount in";
        }
        EXPECT_THAT(*outcome, MatchesRegex(row.outcome));
    }
    const TemporaryFolder folder;
    makeTree(folder);
    EXPECT_EQ(described(onTree(folder, {"--strict", "-clean"})), "0\n");
}

TEST(RunReport, WhatLiesBehindALinkOfSomebodyElseIsToldToHaveStayed) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give a link away";
    }
    const TemporaryFolder folder;
    makeTree(folder);
    folder.make("tree/var/stash/Safari/Cache.bin: x\n"
                "tree/var/mobile/Library/Caches/Safari -> /var/stash/Safari\n"
                "tree/var/root/x.ips: x\n"
                "tree/var/mobile/Library/Logs/CrashReporter/Latest -> /var/root/x.ips");
    for (const char* link : {"Caches/Safari", "Logs/CrashReporter/Latest"}) {
        ASSERT_EQ(::lchown((folder.path("tree/var/mobile/Library/") + link).c_str(), 501, 501), 0);
    }
    EXPECT_EQ(described(onTree(folder, {"--strict", "--dry-run", "-clean"})), "0\n");
    EXPECT_EQ(described(onTree(folder, {"--strict", "-clean"})),
              "1\n2 of 3 items stayed: Operation not permitted.\n");
    EXPECT_THAT(folder.content("tree/var/mobile/Library/Ozvarine/junk.txt"),
                HasSubstr("\nOperation not permitted: /var/mobile/Library/Caches/Safari\n"));
    EXPECT_TRUE(folder.exists("tree/var/stash/Safari/Cache.bin"));
    EXPECT_TRUE(folder.exists("tree/var/root/x.ips"));
    // Nobody would find the report again without its link.
    EXPECT_TRUE(folder.exists("tree/var/mobile/Library/Logs/CrashReporter/Latest"));
}

TEST(RunReport, TheLogGoesToTheHostToo) {
    const TemporaryFolder folder;
    makeTree(folder);
    const std::string log = "tree/var/mobile/Library/Ozvarine/junk.txt";
    const Outcome dryRun = onTree(folder, {"--log", "-", "--dry-run", "-clean", "-printresults"});
    EXPECT_EQ(dryRun.status, 0);
    EXPECT_EQ(dryRun.output,
              folder.content(log) + "success=true\nfreed=4.00 B\ndeleted=1\nshouldrespring=true\n");
    EXPECT_THAT(dryRun.output, HasSubstr("/var/tmp/zz\n"));
    EXPECT_EQ(onTree(folder, {"--log=/dev/stdout", "--dry-run", "-clean"}).output, folder.content(log));

    folder.make("log: of another run, and longer than this one's\n");
    EXPECT_EQ(described(onTree(folder, {"--log", folder.path("log"), "-clean"})), "0\n");
    EXPECT_EQ(folder.content("log"), folder.content(log));
    EXPECT_THAT(folder.content("log"), HasSubstr("Number of files: 1\nTotal size: "));

    const Outcome full = onTree(folder, {"--log", "/dev/full", "-clean", "-printresults"});
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.output, HasSubstr("success=true\n"));
    EXPECT_EQ(full.errors, "The log on this host could not be written in full: No space left on device.\n");
}

TEST(RunReport, TheLogOfAReadOnlyTreeGoesToTheHostInstead) {
    const TemporaryFolder folder;
    makeTree(folder);
    const auto outcome = tests::inMountNamespace([&] {
        tests::makeReadOnly(folder.path("tree"));
        return described(onTree(folder, {"--log", folder.path("log"), "--dry-run", "-clean"}));
    });
    if (!outcome) {
        GTEST_SKIP() << "needs a namespace to mount in";
    }
    EXPECT_EQ(*outcome, "0\nThe log /var/mobile/Library/Ozvarine/junk.txt could not be written in full: "
                        "Read-only file system. The one on this host is whole.\n");
    EXPECT_THAT(folder.content("log"), HasSubstr("Number of files: 1\nApproximate size: 4.00 B\n"));
    EXPECT_THAT(folder.content("log"), HasSubstr("\n/var/tmp/zz\n"));
}

TEST(RunReport, ALogThatCannotBeIsRefusedBeforeTheRun) {
    const TemporaryFolder folder;
    makeTree(folder);
    folder.make("mine: content\nlink -> mine");
    const struct {
        std::vector<std::string> arguments;
        const char* says;
    } cases[] = {
        {{"--log", folder.path("tree/log"), "-clean"}, "name a file outside of the device"},
        {{"--log", folder.path("link"), "-clean"}, "it is a link"},
        {{"--log", folder.path("missing/log"), "-clean"}, "No such file or directory"},
        {{"--log", folder.path("mine"), "-respring"}, "--log is for -clean alone"},
        {{"--log", folder.path("mine"), "-cli"}, "--log is for -clean alone"},
    };
    const auto before = folder.listing();
    for (const auto& [arguments, says] : cases) {
        const Outcome outcome = onTree(folder, arguments);
        EXPECT_EQ(outcome.status, 1) << says;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, MatchesRegex("ozvarine: [^\n]*\n"));
        EXPECT_THAT(outcome.errors, HasSubstr(says));
    }
    EXPECT_EQ(folder.listing(), before);
}
