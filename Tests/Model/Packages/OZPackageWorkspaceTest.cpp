#include "Model/Packages/OZPackageWorkspace.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Packages/OZPackageList.h"
#include "Tests/Model/Packages/PackageDatabase.h"

#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

const std::string addonFolder = "/Library/MobileSubstrate/DynamicLibraries/";
const std::string pageFolder = "/Library/PreferenceLoader/Preferences/";

Names namesOf(const OZPackageInfo::CSAddonArray& addons) {
    Names names;
    for (const auto& addon : addons) {
        names.push_back(addon->identifier());
    }
    return names;
}

class PackageWorkspace : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
    }

    void addPage(const std::string& name, const std::string& icon, int sinceVersion = 0) {
        device.addFile(
            pageFolder + name + ".plist",
            "<plist><dict><key>entry</key><dict><key>label</key><string>" + name +
                "</string><key>icon</key><string>" + icon +
                "</string><key>pl_filter</key><dict><key>CoreFoundationVersion</key><array><integer>" +
                std::to_string(sinceVersion) + "</integer></array></dict></dict></dict></plist>");
    }

    tests::PackageDatabase database;
    TemporaryDevice& device = database.device;
};

TEST_F(PackageWorkspace, JoinsAddonsAndBundlesWithTheirPackages) {
    database.install("com.two", "Name: Two\nIcon: file:///Library/two.png\n",
                     {addonFolder + "B.dylib", addonFolder + "A.dylib", pageFolder + "Page.plist",
                      pageFolder + "Later.plist"});
    database.install("com.off", "Icon: file:///Library/off%20one.png\n",
                     {addonFolder + "Off.dylib", pageFolder + "NewerOnly.plist"});
    database.install("com.plain", "");
    database.install("com.bare", "", {addonFolder + "Bare.dylib"});
    std::filesystem::rename(device.hostPath(addonFolder + "Off.dylib"),
                            device.hostPath(addonFolder + "Off.disabled"));
    device.addFile(addonFolder + "Loose.dylib");
    addPage("Page", "/page.png");
    addPage("Later", "/later.png", 9999);
    addPage("NewerOnly", "/newer.png", 9999);
    addPage("Loose", "/loose.png");

    OZPackageWorkspace workspace(device.device());
    const auto two = workspace.infoForPackageWithIdentifier("com.two");
    EXPECT_TRUE(workspace.finishedLoading());
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(two->name(), "Two");
    EXPECT_THAT(namesOf(two->CSAddons()), ElementsAre("A", "B"));
    ASSERT_NE(two->preferenceBundle(), nullptr);
    EXPECT_EQ(two->preferenceBundle()->identifier(), "Page");
    EXPECT_EQ(two->iconURL(), "OZIcon:///page.png");
    for (const auto& addon : two->CSAddons()) {
        EXPECT_EQ(addon->title(), "Two");
        EXPECT_EQ(addon->package().get(), &two->package());
        EXPECT_EQ(addon->iconURL(), "OZIcon:///page.png");
    }

    const auto off = workspace.infoForPackageWithIdentifier("com.off");
    EXPECT_EQ(off->name(), "com.off");
    EXPECT_EQ(off->preferenceBundle(), nullptr);
    ASSERT_THAT(namesOf(off->CSAddons()), ElementsAre("Off"));
    EXPECT_EQ(off->CSAddons().front()->title(), "Off");
    EXPECT_EQ(off->iconURL(), "OZIcon:///Library/off%20one.png");

    const auto plain = workspace.infoForPackageWithIdentifier("com.plain");
    EXPECT_TRUE(plain && plain->CSAddons().empty() && !plain->iconURL());
    EXPECT_EQ(workspace.infoForPackageWithIdentifier("com.bare")->iconURL(), std::nullopt);
    EXPECT_EQ(workspace.packageInfoByPkgId().size(), 4);
    EXPECT_EQ(workspace.infoForPackageWithIdentifier("missing"), nullptr);

    auto& loose = static_cast<OZCSAddon&>(*workspace.CSAddonList().itemWithIdentifier("Loose"));
    EXPECT_EQ(loose.title(), "Loose");
    EXPECT_EQ(loose.package(), nullptr);
    EXPECT_EQ(loose.iconURL(), std::nullopt);
    EXPECT_EQ(workspace.prefBundleList().itemWithIdentifier("Loose")->iconURL(), "OZIcon:///loose.png");
}

TEST_F(PackageWorkspace, FollowsDependenciesToAddons) {
    database.install("base", "", {addonFolder + "Base.dylib", addonFolder + "Base2.dylib"});
    database.install("library", "Depends: base\n");
    database.install("tweak", "Depends: library\n", {addonFolder + "Tweak.dylib"});
    database.install("left", "Depends: right\n", {addonFolder + "Left.dylib"});
    database.install("right", "Depends: left\n", {addonFolder + "Right.dylib"});
    OZPackageWorkspace workspace(device.device());
    EXPECT_THAT(namesOf(workspace.CSAddonDependenciesForPkgId("tweak")),
                UnorderedElementsAre("Base", "Base2"));
    EXPECT_THAT(namesOf(workspace.CSAddonDependantsForPkgId("base")), ElementsAre("Tweak"));
    EXPECT_THAT(namesOf(workspace.CSAddonDependenciesForPkgId("base")), IsEmpty());
    EXPECT_THAT(namesOf(workspace.CSAddonDependantsForPkgId("left")), UnorderedElementsAre("Left", "Right"));
    EXPECT_THAT(namesOf(workspace.CSAddonDependenciesForPkgId("missing")), IsEmpty());
}

/// A device with one add-on and no package tools.
struct DeviceWithoutTools {
    DeviceWithoutTools() { tree.addFile(addonFolder + "A.dylib"); }

    TemporaryDevice tree;
    platform::Device device{
        platform::FileManager::atRoot(tree.folder() / "Root").value(), {}, platform::ToolTable()};
};

TEST(PackageWorkspaceWithoutTools, StillHasItsItems) {
    DeviceWithoutTools bare;
    OZPackageWorkspace workspace(bare.device);
    EXPECT_TRUE(workspace.packageInfoByPkgId().empty());
    EXPECT_EQ(workspace.CSAddonList().items().size(), 1);
    EXPECT_EQ(workspace.CSAddonList().itemWithIdentifier("A")->title(), "A");
}

TEST(PackageWorkspaceThreads, WaitForTheWork) {
    TemporaryDevice device;
    device.addFile(addonFolder + "A.dylib");
    device.addTool("/usr/bin/dpkg-query", "while [ ! -e \"$OZVARINE_DEVICE/go\" ]; do sleep 0.01; done\n"
                                          "printf 'Package=p\\nStatus=installed\\n'");
    OZPackageWorkspace workspace(device.device());
    std::thread other([&] { EXPECT_EQ(workspace.packageInfoByPkgId().size(), 1); });
    EXPECT_FALSE(workspace.finishedLoading());
    std::ofstream(device.folder() / "go");
    EXPECT_NE(workspace.infoForPackageWithIdentifier("p"), nullptr);
    EXPECT_TRUE(workspace.finishedLoading());
    other.join();
}

TEST(PackageWorkspaceThreads, ComeAndGoAtAnyMoment) {
    DeviceWithoutTools bare;
    for (int round = 0; round < 1000; ++round) {
        OZPackageWorkspace workspace(bare.device);
        if (round % 2 == 0) {
            continue;
        }
        std::thread other([&] { EXPECT_EQ(workspace.CSAddonList().items().size(), 1); });
        EXPECT_TRUE(workspace.prefBundleList().items().empty());
        other.join();
    }
}

TEST(PackageInfo, NeedsItsPackage) {
    EXPECT_THROW(OZPackageInfo(nullptr, {}, nullptr), platform::AssertionFailure);
}

} // namespace
