// Stored choices that several processes save, or that one is killed over.
// Tests/Scenarios/Platform/UserDefaults.txt tells the rest.

#include "Platform/Device/UserDefaults.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace platform;

class UserDefaultsTest : public testing::Test {
  protected:
    UserDefaults defaults() {
        return {*FileManager::atRoot(root.path()), center, warnings, "/var/list.plist"};
    }
    Value stored() const { return parsePropertyList(root.content("var/list.plist")).value_or("unreadable"); }

    static bool save(UserDefaults& values, int number) {
        values.setObject("copies", Array(2000, Value(number)));
        return values.synchronize().has_value();
    }
    bool isWhole() const {
        const Value list = stored();
        const auto* copies = valueAt<Array>(*list.as<Dictionary>(), "copies");
        return copies != nullptr && copies->size() == 2000 && copies->front() == copies->back();
    }

    NotificationCenter center;
    platform::Warnings warnings;
    tests::TemporaryFolder root;
};

TEST_F(UserDefaultsTest, ASaveIsAnnouncedAndWritesWhatObserversStore) {
    auto values = defaults();
    int announced = 0;
    std::ignore = center.addObserver("OZUserDefaultsWillSynchronizeNotification", nullptr,
                                     [&](const Notification&) { values.setObject("state", ++announced); });
    ASSERT_TRUE(values.synchronize());
    ASSERT_TRUE(values.synchronize());
    EXPECT_EQ(stored(), Value(Dictionary{{"state", 2}}));
}

TEST_F(UserDefaultsTest, AProcessKilledWhileItSavesLeavesAWholeFile) {
    std::mt19937 random(std::random_device{}());
    auto first = defaults();
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_TRUE(save(first, -1));
    // A few saves long, however fast the disk is.
    const std::chrono::duration<double> once = std::chrono::steady_clock::now() - begun;
    std::uniform_real_distribution<> seconds(0, 3 * once.count());
    for (int kill = 0; kill < 200; ++kill) {
        int saving[2];
        ASSERT_EQ(pipe(saving), 0);
        const pid_t child = fork();
        if (child == 0) {
            auto values = defaults();
            for (int number = 0; save(values, number) && write(saving[1], "", 1) == 1; ++number) {
            }
            _exit(1);
        }
        close(saving[1]);
        char byte = 0;
        EXPECT_EQ(read(saving[0], &byte, 1), 1); // it saves from here on
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        close(saving[0]);
        ASSERT_TRUE(isWhole()) << kill;
    }
}

TEST_F(UserDefaultsTest, TwoProcessesThatSaveAtOnceLeaveOneWholeFile) {
    auto first = defaults();
    ASSERT_TRUE(save(first, -1));
    pid_t children[2];
    for (pid_t& child : children) {
        child = fork();
        if (child == 0) {
            auto values = defaults();
            int count = 0;
            while (count < 100 && save(values, getpid() * 1000 + count)) {
                ++count;
            }
            _exit(count == 100 ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            ASSERT_TRUE(isWhole());
        }
        EXPECT_EQ(status, 0);
    }
    ASSERT_TRUE(isWhole());
    EXPECT_EQ(tests::snapshotOf(root.path()).size(), 2) << "the folder and the file";
}

} // namespace
