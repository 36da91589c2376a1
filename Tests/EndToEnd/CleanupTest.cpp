#include "Tests/Support/Program.h"
#include "Tests/Support/Sanitized.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::MatchesRegex;
using tests::runProgram;
using tests::TemporaryFolder;

namespace {

constexpr const char* record =
    "success=true\nfreed=[0-9.,]+ [KMG]?i?B\ndeleted=[0-9]+\nshouldrespring=true\n";

// The device's tree without the program's own log and the one preference file that every kind of run edits.
std::vector<std::string> treeListing(const TemporaryFolder& folder) {
    auto lines = folder.listing();
    std::erase_if(lines, [](const std::string& line) {
        return !line.starts_with("device/Root/") || line.find("/Library/Ozvarine") != std::string::npos ||
               line.find("/Library/Preferences/net.box.BoxNet.plist") != std::string::npos;
    });
    return lines;
}

// The lines of a log in no order but those of its time and of the file system's free space.
std::vector<std::string> sortedLines(const std::string& log) {
    std::vector<std::string> lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with("Date: ") && !line.starts_with("Total size: ")) {
            lines.push_back(line);
        }
    }
    std::ranges::sort(lines);
    return lines;
}

uint64_t deletedCount(const std::string& output) {
    return std::stoull(output.substr(output.find("deleted=") + 8));
}

} // namespace

TEST(CleanupOfTheDemoDevice, DryRunChangesOnlyItsLogAndACleanupLeavesNothingForTheNext) {
    const TemporaryFolder folder;
    const std::string device = folder.path("device");
    ASSERT_EQ(runProgram("ozdevice", {"create", device, "--files", "300"}).status, 0);
    const auto before = treeListing(folder);

    const auto analysis =
        runProgram("ozvarine", {"--device", device, "--dry-run", "-clean", "-printresults"});
    EXPECT_THAT(analysis.output, MatchesRegex(record));
    EXPECT_GT(deletedCount(analysis.output), 0);
    EXPECT_EQ(treeListing(folder), before);

    const auto cleanup = runProgram("ozvarine", {"--device", device, "-clean", "-printresults"});
    EXPECT_THAT(cleanup.output, MatchesRegex(record));
    EXPECT_EQ(cleanup.errors, "");
    EXPECT_EQ(cleanup.status, 0);
    EXPECT_GT(deletedCount(cleanup.output), 0);
    std::ifstream log(device + "/Root/var/mobile/Library/Ozvarine/junk.txt");
    std::string lines[7];
    for (auto& line : lines) {
        std::getline(log, line);
    }
    EXPECT_EQ(lines[3], "");
    EXPECT_THAT(lines[4], HasSubstr("Date: "));
    EXPECT_EQ(lines[6], "Number of files: " + std::to_string(deletedCount(cleanup.output)));

    EXPECT_EQ(deletedCount(runProgram("ozvarine", {"--device", device, "-clean", "-printresults"}).output),
              0);
}

TEST(Cleanup, OfADeviceWithoutItsTopLinksIsThatOfTheSameDeviceWithThem) {
    const TemporaryFolder linked;
    const TemporaryFolder bare;
    ASSERT_EQ(runProgram("ozdevice", {"create", linked.path("device"), "--files", "100"}).status, 0);
    ASSERT_EQ(tests::shell("cp -a '" + linked.path("device") + "' '" + bare.path("device") + "'").status, 0);
    for (const char* link : {"var", "etc", "tmp"}) {
        ASSERT_TRUE(std::filesystem::remove(bare.path("device/Root/") + link));
    }
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"--dry-run", "-clean"}, {"-clean"}}) {
        std::vector<std::string> logs;
        for (const TemporaryFolder* folder : {&linked, &bare}) {
            std::vector<std::string> arguments = {"--device", folder->path("device")};
            arguments.insert(arguments.end(), words.begin(), words.end());
            EXPECT_EQ(runProgram("ozvarine", arguments).errors, "");
            logs.push_back(folder->content("device/Root/private/var/mobile/Library/Ozvarine/junk.txt"));
        }
        EXPECT_GT(logs[0].size(), 50000);
        EXPECT_EQ(sortedLines(logs[0]), sortedLines(logs[1]));
    }
    std::vector<std::string> names[2];
    for (size_t index = 0; const TemporaryFolder* folder : {&linked, &bare}) {
        const std::filesystem::path root = folder->path("device/Root");
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            names[index].push_back(entry.path().lexically_relative(root));
        }
        std::ranges::sort(names[index++]);
    }
    std::erase_if(names[0],
                  [](const std::string& name) { return name == "var" || name == "etc" || name == "tmp"; });
    EXPECT_EQ(names[0], names[1]);
}

TEST(Cleanup, HoldsItsMemoryOver200000Files) {
    if (tests::sanitized) {
        GTEST_SKIP() << "a sanitizer takes memory of its own";
    }
    const TemporaryFolder folder;
    const std::string root = folder.path("device/Root");
    constexpr size_t count = 200000;
    folder.make("device/Root/var/tmp/\ndevice/Root/var/mobile/Library/");
    std::ofstream(folder.path("device/Device.plist"))
        << "<plist version=\"1.0\"><dict><key>SystemVersion</key><string>11.1</string></dict></plist>";
    for (size_t index = 0; index < count; ++index) {
        const std::string parent = root + "/var/tmp/folder" + std::to_string(index / 500);
        if (index % 500 == 0) {
            std::filesystem::create_directory(parent);
        }
        std::ofstream(parent + "/temporary-file-number-" + std::to_string(index));
    }
    const auto outcome =
        runProgram("ozvarine", {"--device", folder.path("device"), "-clean", "-printresults"});
    EXPECT_EQ(deletedCount(outcome.output), count);
    EXPECT_LT(outcome.peakMemory, (uint64_t{64} << 20U) + count * 300);
}
