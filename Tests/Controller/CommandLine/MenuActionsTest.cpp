#include "Controller/CommandLine/OZCLIController.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Platform/Device/Device.h"
#include "Tests/Controller/CommandLine/MenuTest.h"
#include "Tests/Support/TemporaryDevice.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>

using namespace tests;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr std::string_view backupExtension = ".OzvarineBackup";

// The device's tree but for what the program keeps for itself. What its tools note is beside the tree.
std::set<std::string> treeOf(const TemporaryFolder& folder) {
    const auto lines = folder.listing();
    std::set<std::string> tree(lines.begin(), lines.end());
    std::erase_if(tree, [](const std::string& line) {
        return !line.starts_with("device/Root/") || line.find("/Library/Ozvarine") != std::string::npos ||
               line.find("com.ozdev90") != std::string::npos ||
               // Even an analysis edits this file of a well-known application.
               line.find("/net.box.BoxNet.plist ") != std::string::npos;
    });
    return tree;
}

// What only one of them has.
std::vector<std::string> difference(const std::set<std::string>& left, const std::set<std::string>& right) {
    std::vector<std::string> lines;
    std::ranges::set_symmetric_difference(left, right, std::back_inserter(lines));
    return lines;
}

ptrdiff_t backupsIn(const TemporaryFolder& folder) {
    return std::ranges::count_if(folder.listing(), [](const std::string& line) {
        return line.find(backupExtension) != std::string::npos;
    });
}

} // namespace

TEST_F(MenuTest, AnalysesThenCleansTheDevice) {
    create();
    const auto before = treeOf(folder);
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("1");
    std::string screen = terminal.screen();
    EXPECT_THAT(screen, HasSubstr("\nTemporary files...\n<yellow>------------------<reset>\n"));
    EXPECT_THAT(screen, testing::EndsWith(storedScreen("results with size")));
    EXPECT_GT(terminal.count(), 0U);
    EXPECT_THAT(difference(treeOf(folder), before), IsEmpty());
    expectScreen(terminal, "", "main");

    terminal.enter("2");
    screen = terminal.screen();
    EXPECT_THAT(screen, testing::EndsWith(storedScreen("results with size")));
    EXPECT_GT(terminal.count(), 0U);
    EXPECT_LT(treeOf(folder).size(), before.size());
    expectScreen(terminal, "", "main");
    terminal.enter("1");
    terminal.screen();
    EXPECT_EQ(terminal.count(), 0U) << "a cleanup leaves nothing to find";
}

TEST_F(MenuTest, BringsBackWhatTestModeHasPutAside) {
    create();
    const auto before = treeOf(folder);
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    for (const char* line : {"9", "1", "0"}) {
        terminal.enter(line);
        terminal.screen();
    }
    terminal.enter("3");
    terminal.screen();
    expectWork(terminal, "8", "Removing iTunesArtwork files", "results with size");
    const auto count = terminal.count();
    EXPECT_GT(count, 0U);
    EXPECT_EQ(backupsIn(folder), static_cast<ptrdiff_t>(count));
    expectScreen(terminal, "", "more");
    expectWork(terminal, "1", "Restoring backup files", "results without size");
    EXPECT_EQ(terminal.count(), count);
    EXPECT_THAT(difference(treeOf(folder), before), IsEmpty());
    expectScreen(terminal, "", "more");

    terminal.enter("8");
    terminal.screen();
    terminal.enter("");
    terminal.screen();
    expectWork(terminal, "2", "Removing backup files", "results without size");
    EXPECT_EQ(terminal.count(), count);
    EXPECT_EQ(backupsIn(folder), 0);
    EXPECT_EQ(treeOf(folder).size(), before.size() - count);
}

TEST_F(MenuTest, EnablesWhatWasDisabled) {
    create();
    const std::string disabled = "/Library/MobileSubstrate/DynamicLibraries/Sleeper.disabled";
    ASSERT_TRUE(exists(disabled));
    Terminal terminal("ozvarine", menuArguments());
    terminal.screen();
    terminal.enter("3");
    terminal.screen();
    expectWork(terminal, "13", "Restoring launch daemons, Cydia Substrate addons and Preference Bundles",
               "items restored");
    EXPECT_FALSE(exists(disabled));
    expectScreen(terminal, "", "more");
}

TEST_F(MenuTest, RefusesWhatTheDeviceNeeds) {
    const struct {
        const char* model;
        std::vector<const char*> refused;
        const char* allowed;
    } cases[] = {
        {"iPhone5,2", {"4", "7"}, "6"},
        {"iPhone9,2", {"5"}, "3"},
        {"iPad2,1", {"3", "6"}, "5"},
        // Nothing is known of it but that it is no iPad, so it may need every image of a phone.
        {"iPhone99,9", {"3", "4", "5", "7"}, "6"},
        // Nothing is known of it at all.
        {"", {"3", "4", "5", "6", "7"}, "8"},
    };
    for (const auto& [model, refused, allowed] : cases) {
        if (*model != '\0') {
            device = folder.path(model);
            create({"--model", model});
        } else {
            shell("sed -i '/HardwareModel/,+1d' '" + device + "/Device.plist'");
        }
        Terminal terminal("ozvarine", menuArguments());
        terminal.screen();
        terminal.enter("3");
        terminal.screen();
        for (const char* choice : refused) {
            expectScreen(terminal, choice, "not on this device");
            expectScreen(terminal, "", "more");
        }
        expectScreen(terminal, allowed, "results with size");
        expectScreen(terminal, "", "more");
        expectScreen(terminal, "12", "fonts stay");
    }
}

TEST(MenuOfAnOlderDevice, MovesTheFontsFolder) {
    TemporaryDevice temporary(platform::DeviceFacts{.foundationVersion = 993.0});
    temporary.addFile("/System/Library/Fonts/Cache/Helvetica.ttc", "helvetica");
    temporary.addFile("/var/log/system.log", "");
    Terminal terminal([&] {
        OZModelBuilder modelBuilder(temporary.device());
        OZCLIController(modelBuilder).startCLI();
        return 0;
    });
    terminal.screen();
    terminal.enter("3");
    terminal.screen();
    expectWork(terminal, "12", "Moving fonts folder", "fonts on data");
    EXPECT_EQ(temporary.contents("/var/Fonts/Cache/Helvetica.ttc"), "helvetica");
    expectScreen(terminal, "", "more");
    expectWork(terminal, "12", "Moving fonts folder", "fonts on system");
    expectScreen(terminal, "", "more");
    std::filesystem::remove_all(temporary.hostPath("/System/Library/Fonts"));
    expectWork(terminal, "12", "Moving fonts folder", "fonts missing");
}

TEST(WaitingLine, GrowsByADotEachHalfSecondAndStartsOver) {
    TemporaryDevice temporary(platform::DeviceFacts{.foundationVersion = 1445.32});
    std::mutex mutex;
    std::condition_variable wakeUp;
    unsigned sleeps = 0;
    temporary.device().setSleep([&](double seconds) {
        EXPECT_DOUBLE_EQ(seconds, 0.5);
        const std::scoped_lock lock(mutex);
        ++sleeps;
        wakeUp.notify_all();
    });
    OZModelBuilder modelBuilder(temporary.device());
    testing::internal::CaptureStdout();
    OZCLIController(modelBuilder)
        .executeBlockInBackground(
            [&] {
                std::unique_lock lock(mutex);
                wakeUp.wait(lock, [&] { return sleeps >= 6; });
            },
            "Working, please wait");
    const std::string output = testing::internal::GetCapturedStdout();
    const std::string line = "\033[H\033[JWorking, please wait . . .";
    EXPECT_THAT(output, testing::StartsWith(line + "\033[H\033[JWorking, please wait ."));
}
