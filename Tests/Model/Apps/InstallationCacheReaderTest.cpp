#include "Model/Apps/OZAppList.h"
#include "Tests/Model/Apps/AppTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

constexpr const char* cache = "/private/var/mobile/Library/Caches/com.apple.mobile.installation.plist";
const std::string folder = "/private/var/mobile/Applications/";

std::vector<std::string> identifiers(const OZAppList& list, OZAppTypeMask typeMask) {
    std::vector<std::string> result;
    for (const auto& app : list.appList({.typeMask = typeMask})) {
        result.push_back(app->identifier());
    }
    return result;
}

class InstallationCacheReaderTest : public testing::TestWithParam<double> {
  protected:
    InstallationCacheReaderTest() { device.addLink("/var", "private/var"); }

    TemporaryDevice device{platform::DeviceFacts{.foundationVersion = GetParam()}};
    tests::AppTree tree{device};
};

TEST_P(InstallationCacheReaderTest, theCacheWinsOverWhatTheFoldersShow) {
    const auto cached = folder + "CACHED";
    tree.addBundle(cached + "/Notes.app", "org.example.notes", {{"CFBundleDisplayName", "In the folder"}});
    tree.addBundle(folder + "UNLISTED/Notes.app", "org.example.notes");
    tree.addBundle("/Applications/Cydia.app", "com.saurik.Cydia", {{"CFBundleDisplayName", "In the folder"}});
    tree.addBundle("/Applications/biteSMS.app", "com.biteSMS");
    tree.addPlist(
        cache,
        {{"User",
          platform::Dictionary{
              {"org.example.notes",
               platform::Dictionary{{"CFBundleIdentifier", "org.example.notes"},
                                    {"CFBundleExecutable", "Main"},
                                    {"CFBundleDisplayName", "In the cache"},
                                    // Without the link's folder, and still the same one.
                                    {"Container", "/var/mobile/Applications/CACHED"},
                                    {"Path", "/var/mobile/Applications/CACHED/Notes.app"}}},
              {"org.example.gone", platform::Dictionary{{"CFBundleIdentifier", "org.example.gone"},
                                                        {"CFBundleExecutable", "Main"},
                                                        {"Container", "/var/mobile/Applications/GONE"},
                                                        {"Path", "/var/mobile/Applications/GONE/Gone.app"}}},
              {"org.example.broken", "no dictionary"}}},
         {"System",
          platform::Dictionary{
              {"com.biteSMS", platform::Dictionary{{"CFBundleIdentifier", "com.biteSMS"},
                                                   {"CFBundleExecutable", "Main"},
                                                   {"Path", "/Applications/biteSMS.app"}}},
              {"com.saurik.Cydia", platform::Dictionary{{"CFBundleIdentifier", "com.saurik.Cydia"},
                                                        {"CFBundleExecutable", "Main"},
                                                        {"CFBundleDisplayName", "In the cache"},
                                                        {"Path", "/Applications/Cydia.app"}}}}}},
        platform::PropertyListFormat::binary);

    const OZAppList list(device.device());
    EXPECT_THAT(identifiers(list, OZAppTypeMask::user), ElementsAre("org.example.notes"));
    EXPECT_THAT(identifiers(list, OZAppTypeMask::system), ElementsAre("com.saurik.Cydia"));
    EXPECT_EQ(list.appWithIdentifier("org.example.notes")->displayName(), "In the cache");
    EXPECT_EQ(list.appWithIdentifier("org.example.notes")->dataContainer(),
              "/var/mobile/Applications/CACHED");
    EXPECT_EQ(list.appWithIdentifier("com.saurik.Cydia")->displayName(), "In the cache");
}

TEST_P(InstallationCacheReaderTest, foldersAddWhatTheCacheLacks) {
    tree.addBundle(folder + "ONE/Binary.app", "org.example.binary", {}, platform::PropertyListFormat::binary);
    tree.addBundle(folder + "TWO/NoCode.app", "org.example.nocode");
    std::filesystem::remove(device.hostPath(folder + "TWO/NoCode.app/Main"));
    device.addFile(folder + "THREE/Broken.app/Info.plist", "<plist>");
    tree.addBundle(folder + "FOUR/NoApp", "org.example.noapp");
    tree.addBundle("/Applications/Tool.app", "org.example.tool");
    tree.addBundle("/Applications/biteSMS.app", "com.biteSMS");
    device.addFile(cache, "not a property list");

    const OZAppList list(device.device());
    EXPECT_THAT(identifiers(list, OZAppTypeMask::all),
                UnorderedElementsAre("org.example.binary", "org.example.tool"));
    EXPECT_EQ(list.appWithIdentifier("org.example.binary")->dataContainer(), folder + "ONE");
    EXPECT_EQ(list.appWithIdentifier("org.example.binary")->bundlePath(), folder + "ONE/Binary.app");
}

// A bundle is anybody's work. What it says of containers would have the engine clean there, as root.
TEST_P(InstallationCacheReaderTest, aBundleDoesNotChooseItsContainers) {
    tree.addBundle(folder + "ONE/Trick.app", "org.example.trick",
                   {{"BundleContainer", "/etc"},
                    {"Container", "/"},
                    {"Path", "/"},
                    {"GroupDataContainers", platform::Dictionary{{"group", "/"}}}});
    const OZAppList list(device.device());
    const auto app = list.appWithIdentifier("org.example.trick");
    ASSERT_NE(app, nullptr);
    EXPECT_EQ(app->dataContainer(), folder + "ONE");
    EXPECT_EQ(app->bundleContainer(), folder + "ONE");
    EXPECT_TRUE(app->groupDataContainers().empty());
}

INSTANTIATE_TEST_SUITE_P(Generations, InstallationCacheReaderTest, testing::Values(751.49, 993.0, 1047.25));

} // namespace
