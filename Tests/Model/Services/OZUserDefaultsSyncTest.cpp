#include "Model/Services/OZUserDefaultsSync.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

using namespace platform;

/// Holds one number, and registers a value for it if it has one.
class Counter : public OZUserDefaultsSync {
  public:
    Counter(UserDefaults& defaults, std::optional<int> registered)
        : _defaults(defaults)
        , _registered(registered) {}

    void registerDefaults() override {
        if (_registered) {
            _defaults.registerDefaults({{"counter", *_registered}});
        }
    }
    void loadDefaults() override {
        const auto value = _defaults.objectForKey("counter");
        count = value ? value->doubleValue().value_or(-1) : -1;
    }
    void writeDefaults() override { _defaults.setObject("counter", count); }

    double count = 0;

  private:
    UserDefaults& _defaults;
    std::optional<int> _registered;
};

TEST(OZUserDefaultsSync, ARegisteredObjectLoadsAtOnceAndWritesAtEverySave) {
    std::string root = testing::TempDir() + "syncXXXXXX";
    ASSERT_NE(mkdtemp(root.data()), nullptr);
    NotificationCenter center;
    const platform::Warnings warnings;
    const auto open = [&] {
        return UserDefaults(*FileManager::atRoot(root), center, warnings, "/a/b.plist");
    };
    {
        auto defaults = open();
        Counter counter(defaults, 7);
        registerObject(defaults, counter);
        EXPECT_EQ(counter.count, 7);
        counter.count = 8;
        Counter other(defaults, std::nullopt);
        other.loadDefaults();
        EXPECT_EQ(other.count, 7); // kept in memory until somebody saves
        ASSERT_TRUE(defaults.synchronize());
        other.loadDefaults();
        EXPECT_EQ(other.count, 8);
        EXPECT_FALSE(defaults.boolForKey("warningPopups"));
        registerDefaultSettings(defaults);
        EXPECT_TRUE(defaults.boolForKey("warningPopups"));
    }
    auto defaults = open();
    Counter counter(defaults, std::nullopt);
    counter.loadDefaults();
    EXPECT_EQ(counter.count, 8);
    EXPECT_EQ(defaults.objectForKey("warningPopups"), std::nullopt);
    std::filesystem::remove_all(root);
}

} // namespace
