// Stored choices that several processes save. Tests/Scenarios/Platform/UserDefaults.txt tells the rest, and
// Tests/EndToEnd/InterruptedTest.cpp kills those who save.

#include "Platform/Device/UserDefaults.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

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
