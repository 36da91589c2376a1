#include "Model/Apps/AppReport.h"
#include "Model/Apps/OZAppList.h"
#include "Tests/Model/Apps/AppTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

struct Generation {
    double foundationVersion;
    std::string bundles;
};

const std::string data = "/var/mobile/Containers/Data/Application/";
const std::string groups = "/var/mobile/Containers/Shared/AppGroup/";
const std::string plugins = "/var/mobile/Containers/Data/PluginKitPlugin/";

class InstalledAppsScanTest : public testing::TestWithParam<Generation> {
  protected:
    void addUserApp(const std::string& identifier, const platform::Dictionary& more = {}) {
        tree.addContainer(bundleContainer(identifier), identifier);
        tree.addBundle(bundle(identifier), identifier, more, platform::PropertyListFormat::binary);
        tree.addContainer(data + "D-" + identifier, identifier);
    }
    [[nodiscard]] std::string bundleContainer(const std::string& identifier) const {
        return GetParam().bundles + "/B-" + identifier;
    }
    [[nodiscard]] std::string bundle(const std::string& identifier) const {
        return bundleContainer(identifier) + "/App.app";
    }

    TemporaryDevice device{platform::DeviceFacts{.foundationVersion = GetParam().foundationVersion}};
    tests::AppTree tree{device};
};

TEST_P(InstalledAppsScanTest, matchesContainersByTheirMetadata) {
    addUserApp("org.example.notes", {{"CFBundleName", "Notes"}});
    tree.addContainer(groups + "G1", "group.org.example.notes");
    tree.addContainer(groups + "G2", "group.org.example.notes.shared");
    tree.addContainer(groups + "G3", "group.org.example.notesplus");
    tree.addBundle(bundle("org.example.notes") + "/PlugIns/Widget.appex", "org.example.notes.widget");
    tree.addContainer(plugins + "P1", "org.example.notes.widget");
    tree.addContainer(plugins + "P2", "org.example.other.widget");
    tree.addBundle("/Applications/Maps.app", "com.apple.Maps");
    tree.addContainer(data + "D-MAPS", "com.apple.Maps");

    const OZAppList list(device.device());
    const auto notes = list.appWithIdentifier("org.example.notes");
    ASSERT_NE(notes, nullptr);
    EXPECT_EQ(notes->type(), OZAppType::user);
    EXPECT_EQ(notes->displayName(), "Notes");
    EXPECT_EQ(notes->bundlePath(), bundle("org.example.notes"));
    EXPECT_EQ(notes->bundleContainer(), bundleContainer("org.example.notes"));
    EXPECT_EQ(notes->dataContainer(), data + "D-org.example.notes");
    EXPECT_THAT(notes->groupDataContainers(),
                ElementsAre(Pair("group.org.example.notes", groups + "G1"),
                            Pair("group.org.example.notes.shared", groups + "G2")));
    EXPECT_THAT(notes->pluginDataContainers(), ElementsAre(Pair("org.example.notes.widget", plugins + "P1")));
    const auto maps = list.appWithIdentifier("com.apple.Maps");
    ASSERT_NE(maps, nullptr);
    EXPECT_EQ(maps->type(), OZAppType::system);
    EXPECT_EQ(maps->dataContainer(), data + "D-MAPS");
    EXPECT_FALSE(maps->bundleContainer());
}

// An excluded application keeps its data only if no other one is taken for the owner.
TEST_P(InstalledAppsScanTest, aGroupBelongsToTheNearestNameUnlessGroupsAreTold) {
    addUserApp("org.example.a");
    addUserApp("org.example.a.lite");
    addUserApp("org.example.b", {{"com.apple.security.application-groups",
                                  platform::Array{"group.custom", "group.missing", 7}}});
    tree.addContainer(groups + "G1", "group.org.example.a.lite");
    tree.addContainer(groups + "G2", "group.custom");
    tree.addContainer(groups + "G3", "group.org.example.b");
    const OZAppList list(device.device());
    EXPECT_THAT(list.appWithIdentifier("org.example.a")->groupDataContainers(), IsEmpty());
    EXPECT_THAT(list.appWithIdentifier("org.example.a.lite")->groupDataContainers(),
                ElementsAre(Pair("group.org.example.a.lite", groups + "G1")));
    EXPECT_THAT(list.appWithIdentifier("org.example.b")->groupDataContainers(),
                ElementsAre(Pair("group.custom", groups + "G2")));
}

TEST_P(InstalledAppsScanTest, passesOverWhatIsNoApplication) {
    addUserApp("org.example.nodata");
    std::filesystem::remove_all(device.hostPath(data + "D-org.example.nodata"));
    addUserApp("org.example.large", {{"Padding", std::string(size_t{1} << 20U, 'x')}});
    addUserApp("org.example.nocode");
    std::filesystem::remove(device.hostPath(bundle("org.example.nocode") + "/Main"));
    // A container that is a link would pass another application's data for its own.
    device.addLink(data + "LINK", "/var/mobile");
    tree.addContainer("/var/mobile", "org.example.linked");
    tree.addContainer(bundleContainer("org.example.linked"), "org.example.linked");
    tree.addBundle(bundle("org.example.linked"), "org.example.linked");
    EXPECT_THAT(OZAppList(device.device()).appList({.typeMask = OZAppTypeMask::all}), IsEmpty());
}

// Which one it is nobody can tell, and it may be the one that the user has excluded.
TEST_P(InstalledAppsScanTest, aDamagedApplicationMayBeAnExcludedOne) {
    const std::string metadata = "/.com.apple.mobile_container_manager.metadata.plist";
    const std::string identifier = "org.example.notes";
    const struct {
        std::string file;
        const char* content;
        const char* excluded;
        bool isComplete;
    } cases[] = {{bundle(identifier) + "/Info.plist", "", "org.example.notes", false},
                 {bundle(identifier) + "/Info.plist", "<plist><dict/></plist>", "org.example.notes", false},
                 {data + "D-" + identifier + metadata, "cut", "org.example.notes", false},
                 {data + "D-" + identifier + metadata, "cut", "org.example.other", true},
                 {"/var/mobile/other", "", "org.example.gone", true}};
    addUserApp("org.example.other");
    for (const auto& [file, content, excluded, isComplete] : cases) {
        addUserApp(identifier);
        device.addFile(file, content);
        const platform::Dictionary stored{{excluded, 7}};
        device.device().standardUserDefaults().setObject("excludedApps", stored);
        OZAppList list(device.device());
        EXPECT_TRUE(list.isComplete());
        list.loadDefaults();
        EXPECT_EQ(list.isComplete(), isComplete) << file << " " << content;
        list.writeDefaults();
        const auto kept = device.device().standardUserDefaults().dictionaryForKey("excludedApps");
        EXPECT_EQ(kept.has_value(), std::string(excluded) != "org.example.gone") << file;
    }
}

TEST_P(InstalledAppsScanTest, theReportNamesEveryContainer) {
    addUserApp("org.example.notes", {{"CFBundleDisplayName", "Notes\x1B[2J"}});
    tree.addContainer(groups + "G1", "group.org.example.notes");
    EXPECT_EQ(describeApplications(device.device()), "user applications: 1\n"
                                                     "  Notes[2J (org.example.notes)\n"
                                                     "    bundle   " +
                                                         bundle("org.example.notes") +
                                                         "\n"
                                                         "    data     " +
                                                         data +
                                                         "D-org.example.notes\n"
                                                         "    group    group.org.example.notes: " +
                                                         groups +
                                                         "G1\n"
                                                         "system applications: 0\n");
}

INSTANTIATE_TEST_SUITE_P(Generations, InstalledAppsScanTest,
                         testing::Values(Generation{1140.11, "/var/mobile/Containers/Bundle/Application"},
                                         Generation{1240.1, "/var/mobile/Containers/Bundle/Application"},
                                         Generation{1242.12, "/var/containers/Bundle/Application"},
                                         Generation{1349.55, "/var/containers/Bundle/Application"},
                                         Generation{1445.32, "/var/containers/Bundle/Application"}));

} // namespace
