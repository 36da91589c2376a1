#include "Model/Items/Togglable/OZCSAddonToggler.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Tests/Model/Packages/PackageDatabase.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using Names = std::vector<std::string>;

/// Tweak needs Middle, which needs a library, which needs Base; Loose belongs to nobody.
class AddonToggler : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
        install("base", "", "Base");
        database.install("library", "Depends: base\n");
        install("middle", "Depends: library\n", "Middle");
        install("tweak", "Depends: middle\n", "Tweak");
        install("com.saurik.substrate.safemode", "Depends: base\n", "Safe");
        database.device.addFile(path("Loose"));
        workspace = std::make_unique<OZPackageWorkspace>(database.device.device());
        toggler = std::make_unique<OZCSAddonToggler>(*workspace, defaults());
    }

    static std::string path(const std::string& name) {
        return "/Library/MobileSubstrate/DynamicLibraries/" + name + ".dylib";
    }
    void install(const std::string& package, const std::string& fields, const std::string& addon) {
        database.install(package, fields, {path(addon)});
    }
    [[nodiscard]] platform::UserDefaults& defaults() {
        return database.device.device().standardUserDefaults();
    }
    void move(const std::string& addon, bool enabled) {
        toggler->setEnabledStateOfAddon(
            static_cast<OZCSAddon&>(*workspace->CSAddonList().itemWithIdentifier(addon)), enabled);
    }
    /// The add-ons that are wanted enabled.
    [[nodiscard]] Names enabled() {
        Names names;
        for (const auto& addon : workspace->CSAddonList().addons()) {
            if (addon->enabledState()) {
                names.push_back(addon->identifier());
            }
            EXPECT_TRUE(addon->currentEnabledState()) << "nothing is applied";
        }
        return names;
    }

    tests::PackageDatabase database;
    std::unique_ptr<OZPackageWorkspace> workspace;
    std::unique_ptr<OZCSAddonToggler> toggler;
};

TEST_F(AddonToggler, TakesDependantsOffAndDependenciesOn) {
    move("Base", false);
    EXPECT_THAT(enabled(), ElementsAre("Loose"));
    move("Base", true);
    EXPECT_THAT(enabled(), ElementsAre("Base", "Loose")) << "dependants stay off";
    move("Base", false);
    move("Tweak", true);
    EXPECT_THAT(enabled(), ElementsAre("Base", "Loose", "Middle", "Tweak"));
    move("Loose", false);
    EXPECT_THAT(enabled(), ElementsAre("Base", "Middle", "Tweak"));
}

TEST_F(AddonToggler, FollowsTheUsersChoice) {
    EXPECT_FALSE(defaults().objectForKey("autoManageDependencies"));
    EXPECT_TRUE(toggler->autoManageDependencies());
    EXPECT_EQ(defaults().objectForKey("autoManageDependencies"), platform::Value(true));
    toggler->setAutoManageDependencies(false);
    EXPECT_FALSE(toggler->autoManageDependencies());
    move("Base", false);
    move("Tweak", false);
    EXPECT_THAT(enabled(), ElementsAre("Loose", "Middle", "Safe"));
    toggler->setAutoManageDependencies(true);
    EXPECT_THAT(enabled(), ElementsAre("Base", "Loose", "Middle", "Safe")) << "enabling wins";
}

TEST_F(AddonToggler, NeverSwitchesTheSafeModeOffWithTheRest) {
    ASSERT_NE(toggler->safeModeAddon(), nullptr);
    toggler->toggleAll();
    EXPECT_THAT(enabled(), ElementsAre("Safe"));
    toggler->toggleAll();
    EXPECT_THAT(enabled(), ElementsAre("Base", "Loose", "Middle", "Safe", "Tweak"));
    move("Safe", false);
    toggler->toggleAll();
    EXPECT_EQ(enabled().size(), 5) << "one that is off makes all go on";
}

} // namespace
