#include "Platform/Device/UserDefaults.h"

#include "Tests/Support/HostFile.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace platform;

constexpr const char* devicePath = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";

class UserDefaultsTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "defaultsXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        root = name;
        file = root.string() + devicePath;
    }
    void TearDown() override { std::filesystem::remove_all(root); }

    UserDefaults defaults() { return {*FileManager::atRoot(root), center, warnings, devicePath}; }

    std::string bytes() const { return tests::contentOf(file); }
    void store(const std::string& content) const {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << content;
    }
    Value stored() const { return parsePropertyList(bytes()).value_or("unreadable"); }

    /// A child process that runs the action for good.
    template <class Action>
    static pid_t start(Action action) {
        const pid_t child = fork();
        if (child == 0) {
            action();
            _exit(0);
        }
        return child;
    }

    NotificationCenter center;
    platform::Warnings warnings;
    std::filesystem::path root;
    std::filesystem::path file;
};

TEST_F(UserDefaultsTest, StoredValuesHideRegisteredOnesWhichAreNeverSaved) {
    auto first = defaults();
    first.registerDefaults({{"a", 1}, {"b", true}});
    first.registerDefaults({{"a", "registered"}});
    EXPECT_EQ(first.stringForKey("a"), "registered");
    first.setObject("a", Array{1});
    first.setBool("c", true);
    EXPECT_EQ(first.stringForKey("a"), std::nullopt);
    EXPECT_EQ(first.arrayForKey("a"), Array{1});
    EXPECT_FALSE(std::filesystem::exists(file)); // nothing is written before it is asked for
    EXPECT_EQ(defaults().objectForKey("c"), std::nullopt);

    ASSERT_TRUE(first.synchronize());
    EXPECT_TRUE(bytes().starts_with("bplist00"));
    EXPECT_EQ(stored(), Value(Dictionary{{"a", Array{1}}, {"c", true}}));
    first.removeObjectForKey("a");
    ASSERT_TRUE(first.synchronize());
    EXPECT_EQ(first.stringForKey("a"), "registered");
    EXPECT_EQ(defaults().objectForKey("a"), std::nullopt);
}

TEST_F(UserDefaultsTest, BooleansAreNumbersAndTexts) {
    auto values = defaults();
    const std::vector<std::pair<Value, bool>> rows = {
        {true, true}, {0, false},    {2, true},     {0.5, true},  {"YES", true}, {"true", true},
        {"1", true},  {"010", true}, {"no", false}, {"0", false}, {"", false},   {Array{1}, false}};
    for (const auto& [value, truth] : rows) {
        values.setObject("key", value);
        EXPECT_EQ(values.boolForKey("key"), truth);
    }
    EXPECT_FALSE(values.boolForKey("absent"));
}

TEST_F(UserDefaultsTest, ASaveIsAnnouncedAndWritesWhatObserversStore) {
    auto values = defaults();
    int announced = 0;
    std::ignore =
        center.addObserver("OZUserDefaultsWillSynchronizeNotification", nullptr, [&](const Notification&) {
            ++announced;
            values.setObject("state", announced);
        });
    ASSERT_TRUE(values.synchronize());
    ASSERT_TRUE(values.synchronize());
    EXPECT_EQ(stored(), Value(Dictionary{{"state", 2}}));
}

TEST_F(UserDefaultsTest, AnUnchangedFileIsLeftAloneInItsFormat) {
    const std::string xml = serializePropertyList(Dictionary{{"a", 1}}, PropertyListFormat::xml);
    store(xml);
    auto values = defaults();
    values.setObject("a", 1);
    ASSERT_TRUE(values.synchronize());
    EXPECT_EQ(bytes(), xml);
}

TEST_F(UserDefaultsTest, OtherKeysOfAnotherProcessStay) {
    auto one = defaults();
    auto two = defaults();
    one.setObject("one", 1);
    two.setObject("two", 2);
    ASSERT_TRUE(one.synchronize());
    ASSERT_TRUE(two.synchronize());
    EXPECT_EQ(stored(), Value(Dictionary{{"one", 1}, {"two", 2}}));
    EXPECT_EQ(two.objectForKey("one"), Value(1));
}

TEST_F(UserDefaultsTest, ADamagedFileIsKeptAsideWhenSomethingIsSaved) {
    const std::string kept = file.string() + ".damaged";
    for (const std::string& damaged :
         {std::string("bplist00 not one"), serializePropertyList(Array{1}, PropertyListFormat::binary)}) {
        store(damaged);
        auto values = defaults();
        values.registerDefaults({{"a", 1}});
        testing::internal::CaptureStderr();
        EXPECT_EQ(values.objectForKey("a"), Value(1));
        EXPECT_EQ(values.objectForKey("a"), Value(1));
        EXPECT_THAT(
            testing::internal::GetCapturedStderr(),
            testing::MatchesRegex("The settings in [^\n]* cannot be read [^\n]*; the defaults serve.\n"));
        values.removeObjectForKey("a");
        ASSERT_TRUE(values.synchronize());
        EXPECT_EQ(bytes(), damaged); // a run that stores nothing leaves it alone
        values.setObject("b", 2);
        ASSERT_TRUE(values.synchronize());
        EXPECT_EQ(stored(), Value(Dictionary{{"b", 2}}));
    }
    EXPECT_TRUE(std::filesystem::exists(kept));
    EXPECT_TRUE(std::filesystem::exists(kept + "-2"));
}

TEST_F(UserDefaultsTest, AFailedSaveIsReportedAndTriedAgain) {
    std::ofstream(root / "var") << "in the way";
    auto values = defaults();
    values.setObject("a", 1);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(values.synchronize());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("cannot be saved to " + std::string(devicePath)));
    EXPECT_EQ(values.objectForKey("a"), Value(1));
    std::filesystem::remove(root / "var");
    EXPECT_TRUE(values.synchronize());
    EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}}));
}

Array copies(int number) {
    return Array(2000, Value(number));
}

bool isWhole(const Value& list, const char* key) {
    const auto* values = list.as<Dictionary>();
    const auto* array = values != nullptr ? valueAt<Array>(*values, key) : nullptr;
    return array != nullptr && array->size() == 2000 && array->front() == array->back();
}

TEST_F(UserDefaultsTest, AProcessKilledWhileItSavesLeavesAWholeFile) {
    std::mt19937 random(std::random_device{}());
    auto first = defaults();
    first.setObject("copies", copies(-1));
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_TRUE(first.synchronize());
    // A few saves long, however fast the disk is.
    const std::chrono::duration<double> save = std::chrono::steady_clock::now() - begun;
    std::uniform_real_distribution<> seconds(0, 3 * save.count());
    for (int kill = 0; kill < 200; ++kill) {
        int saving[2];
        ASSERT_EQ(pipe(saving), 0);
        const pid_t child = start([&] {
            auto values = defaults();
            for (int number = 0;; ++number) {
                values.setObject("copies", copies(number));
                if (!values.synchronize() || write(saving[1], "", 1) != 1) {
                    _exit(1);
                }
            }
        });
        close(saving[1]);
        char byte = 0;
        EXPECT_EQ(read(saving[0], &byte, 1), 1); // it saves from here on
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        close(saving[0]);
        ASSERT_TRUE(isWhole(stored(), "copies")) << kill;
    }
}

TEST_F(UserDefaultsTest, TwoProcessesThatSaveAtOnceLeaveOneWholeFile) {
    auto first = defaults();
    first.setObject("copies", copies(-1));
    ASSERT_TRUE(first.synchronize());
    std::vector<pid_t> children;
    for (int child = 0; child < 2; ++child) {
        children.push_back(start([&] {
            auto values = defaults();
            for (int save = 0; save < 100; ++save) {
                values.setObject("copies", copies(child * 1000 + save));
                if (!values.synchronize()) {
                    _exit(1);
                }
            }
        }));
    }
    for (const pid_t child : children) {
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            ASSERT_TRUE(isWhole(stored(), "copies"));
        }
        EXPECT_EQ(status, 0);
    }
    ASSERT_TRUE(isWhole(stored(), "copies"));
    const auto entries = std::filesystem::directory_iterator(file.parent_path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

} // namespace
