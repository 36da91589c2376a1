// Switching things off and bringing all of them back, on demo devices with the built programs.

#include "Model/Builder/OZModelBuilder.h"
#include "Model/Items/Togglable/Daemons/OZDaemonList.h"
#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZCSAddonToggler.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Packages/OZPackageInfo.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Platform/Device/Device.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using tests::runProgram;
using tests::TemporaryFolder;

namespace {

using Lines = std::vector<std::string>;

const std::string addonFolder = "/Library/MobileSubstrate/DynamicLibraries/";
const std::string dockList = "/var/lib/dpkg/info/org.hillside.dock.list";
const std::string supportList = "/var/lib/dpkg/info/org.hillside.iconsupport.list";

Lines linesOf(const std::string& text) {
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A demo device of a generation.
class DemoDevice {
  public:
    explicit DemoDevice(const std::string& version) {
        EXPECT_EQ(runProgram("ozdevice", {"create", path(), "--ios", version, "--files", "1"}).status, 0);
    }

    [[nodiscard]] std::string path() const { return folder.path("device"); }
    [[nodiscard]] bool has(const std::string& devicePath) const { return folder.exists(inTree(devicePath)); }
    [[nodiscard]] Lines lines(const std::string& devicePath) const {
        return linesOf(folder.content(inTree(devicePath)));
    }
    [[nodiscard]] Lines journal() const {
        return folder.exists("device/Journal.log") ? linesOf(folder.content("device/Journal.log")) : Lines();
    }
    [[nodiscard]] Lines tree() const {
        auto lines = folder.listing();
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("device/Root/"); });
        return lines;
    }
    void restore() const {
        const auto outcome = runProgram("ozvarine", {"--device", path(), "-restore-togglable-items"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.output + outcome.errors, "");
    }

    TemporaryFolder folder{tests::memoryFolder()};

  private:
    static std::string inTree(const std::string& devicePath) {
        return std::string("device/Root") + (devicePath.starts_with("/var/") ? "/private" : "") + devicePath;
    }
};

/// What the screens of one run of the program have.
class Screens {
  public:
    explicit Screens(const DemoDevice& demo)
        : device(platform::Device::open(demo.path()).value())
        , builder(*device)
        , toggler(builder.packageWorkspace(), device->standardUserDefaults()) {}

    OZCSAddonList& addons() { return builder.packageWorkspace().CSAddonList(); }
    void switchPackage(const std::string& identifier, bool enabled) {
        for (const auto& addon :
             builder.packageWorkspace().infoForPackageWithIdentifier(identifier)->CSAddons()) {
            toggler.setEnabledStateOfAddon(*addon, enabled);
        }
    }

    std::unique_ptr<platform::Device> device;
    OZModelBuilder builder;
    OZCSAddonToggler toggler;
};

} // namespace

class Restore : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
    }
};

TEST_F(Restore, ADisabledAddonTakesItsDependantsAndStaysItsPackagesOwn) {
    const DemoDevice demo("11.1");
    const Lines before = demo.lines(supportList);
    const std::string disabledSupport = addonFolder + "IconSupport.disabled";
    const std::string disabledDock = addonFolder + "DockColumns.disabled";
    {
        Screens screens(demo);
        screens.switchPackage("org.hillside.iconsupport", false);
        EXPECT_TRUE(demo.has(addonFolder + "IconSupport.dylib")) << "nothing was applied";
        EXPECT_TRUE(screens.addons().applyChanges());
    }
    EXPECT_TRUE(demo.has(disabledSupport) && demo.has(disabledDock));
    EXPECT_FALSE(demo.has(addonFolder + "IconSupport.dylib"));
    EXPECT_TRUE(demo.has(addonFolder + "StatusDots.dylib"));
    EXPECT_EQ(std::ranges::count(demo.lines(supportList), disabledSupport), 1);
    EXPECT_THAT(demo.lines(dockList), Contains(disabledDock));
    {
        Screens screens(demo);
        screens.switchPackage("org.hillside.iconsupport", true);
        EXPECT_TRUE(screens.addons().applyChanges());
    }
    EXPECT_EQ(demo.lines(supportList), before);
    EXPECT_TRUE(demo.has(disabledDock)) << "a dependant stays off";
    const std::string command = "dpkg --root='" + demo.path() +
                                "/Root' --log=/dev/null --force-depends -r org.hillside.dock >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_FALSE(demo.has(disabledDock));
}

TEST_F(Restore, ToolsAreWaitedForWhoeverIgnoresTheirEnd) {
    const DemoDevice demo("11.1.2");
    const auto restored =
        tests::shell("env --ignore-signal=CHLD '" OZ_BINARY_DIRECTORY "/ozvarine' --device '" + demo.path() +
                     "' -restore-togglable-items");
    EXPECT_EQ(restored.status, 0) << restored.output;
    EXPECT_THAT(demo.journal(), Contains(testing::HasSubstr("load -w")));
}

TEST_F(Restore, BringsEverythingBackByFiles) {
    const DemoDevice demo("9.3");
    demo.restore(); // The demo device comes with a few things disabled.
    const Lines pristine = demo.tree();
    {
        Screens screens(demo);
        screens.addons().setEnabledState(false);
        EXPECT_TRUE(screens.addons().applyChanges());
        auto& bundles = screens.builder.packageWorkspace().prefBundleList();
        bundles.setEnabledState(false);
        EXPECT_TRUE(bundles.applyChanges());
        screens.builder.daemonList().itemWithIdentifier("log")->setEnabledState(false);
        EXPECT_TRUE(screens.builder.daemonList().applyChanges());
    }
    EXPECT_TRUE(demo.has("/System/Library/LaunchDaemonsBAK/com.apple.syslogd.plist"));
    EXPECT_TRUE(demo.has("/Library/PreferenceLoader/Preferences/LockClock/LockClock.disabled"));
    EXPECT_TRUE(demo.has(addonFolder + "PreferenceLoaderDisabled.disabled"));
    const Lines disabled = demo.tree();
    EXPECT_NE(disabled, pristine);
    EXPECT_EQ(
        runProgram("ozvarine", {"--device", demo.path(), "--dry-run", "-restore-togglable-items"}).status, 0);
    EXPECT_EQ(demo.tree(), disabled);

    demo.restore();
    EXPECT_EQ(demo.tree(), pristine);
    demo.restore();
    EXPECT_EQ(demo.tree(), pristine);
    EXPECT_THAT(demo.journal(), IsEmpty());
}

TEST_F(Restore, BringsDaemonsBackThroughTheServiceManager) {
    const DemoDevice demo("11.1");
    {
        Screens screens(demo);
        auto& daemons = screens.builder.daemonList();
        daemons.itemWithIdentifier("com.apple.syslogd")->setEnabledState(true);
        daemons.itemWithIdentifier("com.apple.ReportCrash")->setEnabledState(false);
        EXPECT_TRUE(daemons.applyChanges());
    }
    std::filesystem::remove(demo.path() + "/Journal.log");
    demo.restore();
    auto journal = demo.journal();
    std::erase(journal, "launchctl print-disabled");
    EXPECT_THAT(journal, testing::UnorderedElementsAre(
                             "launchctl load -w /System/Library/LaunchDaemons/com.apple.ReportCrash.plist",
                             "launchctl load -w /System/Library/LaunchDaemons/com.apple.searchd.plist"));
    EXPECT_FALSE(demo.has(addonFolder + "Sleeper.disabled"));

    const Lines restored = demo.tree();
    std::filesystem::remove(demo.path() + "/Journal.log");
    demo.restore();
    EXPECT_EQ(demo.tree(), restored);
    EXPECT_THAT(demo.journal(), Each("launchctl print-disabled"));
}

TEST_F(Restore, SettingsArePrintedForScripts) {
    const DemoDevice demo("9.3");
    const auto printSettings = [&] {
        return runProgram("ozvarine", {"--device", demo.path(), "-printsettings"});
    };
    EXPECT_EQ(printSettings().output, "language=English\n");
    EXPECT_EQ(printSettings().status, 0);
    {
        auto device = platform::Device::open(demo.path()).value();
        device->standardUserDefaults().setObject("language", "German");
        device->standardUserDefaults().setObject(
            "plugins", platform::Dictionary{{"com.ozdev90.ozvarine.activator", true},
                                            {"com.ozdev90.ozvarine.flipswitch", true}});
        ASSERT_TRUE(device->standardUserDefaults().synchronize());
    }
    EXPECT_EQ(printSettings().output,
              "language=German\n"
              "plugins=com.ozdev90.ozvarine.activator,com.ozdev90.ozvarine.flipswitch\n");
}
