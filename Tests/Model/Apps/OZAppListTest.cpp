#include "Model/Apps/OZAppList.h"

#include "Platform/Device/Device.h"
#include "Tests/Model/Apps/AppTree.h"

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

/// A device that tells its applications itself.
class OZAppListTest : public testing::Test {
  protected:
    void addApp(const char* type, const std::string& identifier, const std::string& name,
                platform::Dictionary infoPlist = {}) {
        const std::string bundle = "/apps/" + identifier + ".app";
        tree.addBundle(bundle, identifier, std::move(infoPlist));
        apps.push_back(platform::Dictionary{{"ApplicationType", type},
                                            {"Path", bundle},
                                            {"CFBundleExecutable", "Main"},
                                            {"CFBundleIdentifier", identifier},
                                            {"CFBundleDisplayName", name},
                                            {"BundleContainer", "/apps/b/" + identifier},
                                            {"Container", "/apps/c/" + identifier}});
    }
    OZAppList& list() {
        if (!_list) {
            platform::DeviceFacts facts{.foundationVersion = 1445.32};
            facts.applications = apps;
            _device = std::make_unique<platform::Device>(
                platform::FileManager::atRoot(files.hostPath("/")).value(), facts,
                platform::ToolTable({}, files.folder(), files.folder()));
            _list = std::make_unique<OZAppList>(*_device);
        }
        return *_list;
    }
    std::vector<std::string> names(const OZAppQuery& query) {
        std::vector<std::string> result;
        for (const auto& app : list().appList(query)) {
            result.push_back(app->displayName());
        }
        return result;
    }

    TemporaryDevice files;
    tests::AppTree tree{files};
    platform::Array apps;
    std::unique_ptr<platform::Device> _device;
    std::unique_ptr<OZAppList> _list;
};

TEST_F(OZAppListTest, sortsWithoutRegardToCase) {
    addApp("User", "a", "zebra");
    addApp("User", "b", "Ähre");
    addApp("User", "c", "Yak");
    addApp("User", "d", "apple");
    addApp("User", "e", "ÄHRE 2");
    EXPECT_THAT(names({.typeMask = OZAppTypeMask::user}),
                ElementsAre("apple", "Yak", "zebra", "Ähre", "ÄHRE 2"));
}

TEST_F(OZAppListTest, filtersInTheOrderOfAQuery) {
    addApp("User", "org.user", "User");
    addApp("User", "com.applepie", "Pie");
    addApp("System", "com.apple.Maps", "Maps");
    addApp("System", "org.tool", "Tool");
    addApp("System", "both", "Both, system");
    addApp("User", "both", "Both, user");
    addApp("Internal", "org.internal", "Internal");
    using enum OZAppTypeMask;

    EXPECT_THAT(names({}), IsEmpty());
    EXPECT_THAT(names({.typeMask = system}), ElementsAre("Both, system", "Maps", "Tool"));
    EXPECT_THAT(names({.typeMask = all}), ElementsAre("Both, user", "Maps", "Pie", "Tool", "User"));
    EXPECT_THAT(
        names({.typeMask = user, .includingIdentifiers = {"com.apple.Maps", "unknown", "org.internal"}}),
        ElementsAre("Both, user", "Maps", "Pie", "User"));
    EXPECT_THAT(names({.includingIdentifiers = {"org.tool"}, .excludingIdentifiers = {"org.tool"}}),
                IsEmpty());
    // The prefix counts, not the component.
    EXPECT_THAT(names({.typeMask = user,
                       .includingIdentifiers = {"com.apple.Maps"},
                       .filterMask = OZAppFilterMask::noApple}),
                ElementsAre("Both, user", "User"));
    list().setExclusionMask(OZExclusionMask::images | OZExclusionMask::languages, "org.tool");
    EXPECT_THAT(names({.includingIdentifiers = {"org.tool"}, .exclusionMask = OZExclusionMask::languages}),
                IsEmpty());
    EXPECT_THAT(names({.includingIdentifiers = {"org.tool"}, .exclusionMask = OZExclusionMask::cleanup}),
                ElementsAre("Tool"));
    EXPECT_EQ(list().appWithIdentifier("both")->type(), OZAppType::user);
}

TEST_F(OZAppListTest, anIconFileMakesASystemApplicationVisible) {
    using platform::Array;
    using platform::Dictionary;
    addApp("System", "phone", "Phone", {{"CFBundleIconFile", "icon.png"}});
    files.addFile("/apps/phone.app/icon@2x.png");
    addApp("System", "mail", "Mail", {{"CFBundleIconFiles", Array{"missing", "Icon-60"}}});
    files.addFile("/apps/mail.app/Icon-60@3x.png");
    addApp("System", "music", "Music",
           {{"CFBundleIcons",
             Dictionary{{"CFBundlePrimaryIcon", Dictionary{{"CFBundleIconFiles", Array{"AppIcon"}}}}}}});
    files.addFile("/apps/music.app/AppIcon@2x~ipad.png");
    addApp("System", "service", "Service", {{"CFBundleIconFile", "icon.png"}});
    files.addFile("/apps/service.app/icon.png/not a file");
    addApp("System", "daemon", "Daemon", {{"CFBundleIconFile", ""}});
    addApp("User", "game", "Game");

    const OZAppQuery visible{.typeMask = OZAppTypeMask::all, .filterMask = OZAppFilterMask::validIcon};
    EXPECT_THAT(names(visible), ElementsAre("Game", "Mail", "Music", "Phone"));
    // The answer is remembered: icons are looked at once.
    std::filesystem::remove(files.hostPath("/apps/phone.app/icon@2x.png"));
    EXPECT_THAT(names(visible), ElementsAre("Game", "Mail", "Music", "Phone"));
}

TEST_F(OZAppListTest, warmingIconsOutlivesTheList) {
    for (int index = 0; index < 200; ++index) {
        const auto identifier = "system" + std::to_string(index);
        addApp("System", identifier, identifier, {{"CFBundleIconFile", "icon"}});
        files.addFile("/apps/" + identifier + ".app/icon.png");
    }
    const auto last = list().appWithIdentifier("system199");
    list().checkSystemAppIconValidityInBackground();
    _list.reset();
    auto fileManager = _device->fileManager();
    EXPECT_TRUE(last->hasValidIcon(fileManager));
    _device.reset();
}

TEST_F(OZAppListTest, exclusionsBelongToInstalledApplications) {
    addApp("User", "user", "User");
    addApp("System", "system", "System");
    list().setExclusionMask(OZExclusionMask::all, "unknown");
    EXPECT_THAT(list().allExcludedApps(), IsEmpty());

    list().setExclusionMask(OZExclusionMask::cleanup, "user");
    list().toggleExclusionMask(OZExclusionMask::images, "user");
    list().toggleExclusionMask(OZExclusionMask::languages, "system");
    EXPECT_TRUE(list().isAppExcluded("user", OZExclusionMask::images));
    EXPECT_FALSE(list().isAppExcluded("user", OZExclusionMask::languages));
    EXPECT_THAT(list().excludedAppsWithExclusionMask(OZExclusionMask::cleanup),
                ElementsAre(Pair("user", OZExclusionMask::cleanup | OZExclusionMask::images)));
    list().toggleExclusionMask(OZExclusionMask::images, "user");
    EXPECT_EQ(list().exclusionMaskForApp("user"), OZExclusionMask::cleanup);
    list().toggleExclusionMask(OZExclusionMask::cleanup, "user");
    EXPECT_THAT(list().excludedAppsIdentifiers(), ElementsAre("system"));
    list().removeAllExcludedApps();
    EXPECT_FALSE(list().isAppExcluded("system"));
}

TEST_F(OZAppListTest, pathsOfExcludedAppsFollowTheTypeMask) {
    addApp("User", "user", "User");
    addApp("System", "system", "System");
    apps.back().as<platform::Dictionary>()->erase("Container");
    addApp("User", "other", "Other");
    list().setExclusionMask(OZExclusionMask::cleanup, "user");
    list().setExclusionMask(OZExclusionMask::all, "system");
    list().setExclusionMask(OZExclusionMask::images, "other");
    using enum OZAppTypeMask;
    EXPECT_THAT(list().pathsForExcludedApps(OZExclusionMask::cleanup, user),
                ElementsAre("/apps/user.app", "/apps/c/user", "/apps/b/user"));
    EXPECT_THAT(list().pathsForExcludedApps(OZExclusionMask::cleanup, all),
                UnorderedElementsAre("/apps/system.app", "/apps/user.app", "/apps/c/user", "/apps/b/user"));
    EXPECT_THAT(list().pathsForExcludedApps(OZExclusionMask::languages, user), IsEmpty());
}

TEST_F(OZAppListTest, storedExclusionsLoseWhatIsGone) {
    addApp("User", "user", "User");
    addApp("User", "whole", "Whole");
    addApp("User", "written", "Written");
    auto& defaults = (list(), _device->standardUserDefaults());
    defaults.setObject(
        "excludedApps",
        platform::Dictionary{{"user", 5}, {"gone", 7}, {"whole", 0}, {"text", "7"}, {"written", "2"}});
    list().loadDefaults();
    EXPECT_THAT(list().allExcludedApps(),
                UnorderedElementsAre(Pair("user", OZExclusionMask::cleanup | OZExclusionMask::languages),
                                     Pair("written", OZExclusionMask::images)));
    list().writeDefaults();
    EXPECT_EQ(defaults.dictionaryForKey("excludedApps"), (platform::Dictionary{{"user", 5}, {"written", 2}}));
    list().removeAllExcludedApps();
    list().writeDefaults();
    EXPECT_FALSE(defaults.objectForKey("excludedApps"));
}

TEST_F(OZAppListTest, knowsTheDirectoriesOfEachGeneration) {
    using Directories = std::vector<std::string>;
    const auto directories = [](double foundationVersion) {
        TemporaryDevice device(platform::DeviceFacts{.foundationVersion = foundationVersion});
        const OZAppList list(device.device());
        Directories found;
        for (const auto& directory : {list.userAppBundleContainerDir(), list.userAppDataContainerDir(),
                                      list.systemAppBundleContainerDir(), list.systemAppDataContainerDir(),
                                      list.userGroupDataContainerDir(), list.systemGroupDataContainerDir(),
                                      list.pluginDataContainerDir()}) {
            found.push_back(directory.value_or("none"));
        }
        return found;
    };
    const Directories single{"/var/mobile/Applications",
                             "/var/mobile/Applications",
                             "/Applications",
                             "none",
                             "none",
                             "none",
                             "none"};
    const Directories split{"/var/mobile/Containers/Bundle/Application",
                            "/var/mobile/Containers/Data/Application",
                            "/Applications",
                            "none",
                            "/var/mobile/Containers/Shared/AppGroup",
                            "none",
                            "/var/mobile/Containers/Data/PluginKitPlugin"};
    const Directories latest{"/var/containers/Bundle/Application",
                             "/var/mobile/Containers/Data/Application",
                             "/Applications",
                             "/var/containers/Data/System",
                             "/var/mobile/Containers/Shared/AppGroup",
                             "/var/containers/Shared/SystemGroup",
                             "/var/mobile/Containers/Data/PluginKitPlugin"};
    EXPECT_EQ(directories(0), single);
    EXPECT_EQ(directories(1140.1), single);
    EXPECT_EQ(directories(1140.11), split);
    EXPECT_EQ(directories(1242.11), split);
    EXPECT_EQ(directories(1242.12), latest);
}

} // namespace
