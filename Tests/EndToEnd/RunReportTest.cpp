// What the built program tells of a run beside its record: items that stayed, and the log on the host.

#include "Tests/Support/Mounts.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::MatchesRegex;
using tests::Outcome;
using tests::TemporaryFolder;

namespace {

void makeTree(const TemporaryFolder& folder) {
    folder.make("tree/System/Library/CoreServices/\ntree/var/mobile/\ntree/var/tmp/zz: junk");
    std::ofstream(folder.path("tree/System/Library/CoreServices/SystemVersion.plist"))
        << "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>ProductVersion</key>"
           "<string>11.1</string></dict></plist>";
}

Outcome onTree(const TemporaryFolder& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--device", folder.path("tree")});
    return tests::runProgram("ozvarine", arguments);
}

std::string described(const Outcome& outcome) {
    return std::to_string(outcome.status) + "\n" + outcome.output + outcome.errors;
}

} // namespace

TEST(RunReport, ItemsThatStayedFailAStrictRunAlone) {
    const std::string record = "success=true\nfreed=0.00 B\ndeleted=1\nshouldrespring=true\n";
    const std::string line = "1 of 1 items stayed: Read-only file system.\n";
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
        EXPECT_EQ(*outcome, row.outcome);
    }
    const TemporaryFolder folder;
    makeTree(folder);
    EXPECT_EQ(described(onTree(folder, {"--strict", "-clean"})), "0\n");
}
