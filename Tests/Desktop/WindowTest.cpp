// The real window on real device folders, used as a person uses it, without a display.
#include "Interface/Screens/Chooser/MountedDevices.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tools/screens/WindowDriver.h"

#include <QGuiApplication>
#include <QQuickStyle>
#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

namespace {

class Window : public testing::Test {
  protected:
    void makeDevice() const {
        ASSERT_EQ(tests::shell(OZ_BINARY_DIRECTORY "/ozdevice create '" + device + "'").status, 0);
    }
    void open(bool named = true) {
        driver.emplace(folder.path("state"), named ? std::optional(device) : std::nullopt);
        driver->waitFor(named ? "Applications" : "Try a demo device");
    }

    tests::TemporaryFolder folder;
    std::string device = folder.path("My device");
    std::string log = device + "/Root/var/mobile/Library/Ozvarine/junk.txt";
    std::optional<WindowDriver> driver;
};

} // namespace

TEST_F(Window, AnalysesShowsTheLogCleansAndBeginsAgain) {
    makeDevice();
    open();
    driver->press("Analyze");
    driver->waitFor("Log");
    EXPECT_THAT(tests::shell("cat '" + log + "'").output, HasSubstr("# PROCESSED FILES #"));
    driver->press("Done");
    driver->press("Clean");
    driver->waitFor("No");
    EXPECT_THAT(driver->read(), Contains(HasSubstr("Deleted files: 24")));
    EXPECT_THAT(driver->read(), Contains(HasSubstr("starts in")));
    driver->press("No");
    driver->waitFor("Applications");
    // One step alone, which finds nothing any more.
    driver->press("Cache Files");
    EXPECT_THAT(driver->read(), IsSupersetOf({"Button: Analyze", "Button: Clean", "Button: Cancel"}));
    driver->press("Clean");
    driver->waitFor("No");
    EXPECT_THAT(driver->read(), Contains(HasSubstr("Deleted files: 0")));
}

TEST_F(Window, KeepsWhatIsSwitchedForTheNextStart) {
    makeDevice();
    open();
    driver->turn("Cydia Sources");
    driver->press("Ok"); // The warning.
    EXPECT_THAT(driver->read(), Contains("ListItem: Cydia Sources, on"));
    driver->press("Message Attachments: smart");
    driver->press("Ok");
    driver->window().close();
    open();
    EXPECT_THAT(driver->read(),
                IsSupersetOf({"ListItem: Cydia Sources, on", "ListItem: Message Attachments, smart"}));
}

TEST_F(Window, IsUsedByKeysAlone) {
    makeDevice();
    open();
    driver->press("Applications");
    driver->key(Qt::Key_Escape);
    EXPECT_THAT(driver->read(), Not(Contains("Button: Cancel")));
    driver->key(Qt::Key_Down);
    driver->key(Qt::Key_Return);
    EXPECT_THAT(driver->read(), Contains("Button: Cancel"));
    for (int turn = 0; turn < 3; ++turn) {
        driver->key(Qt::Key_Tab);
    }
    driver->key(Qt::Key_Escape);
    for (int turn = 0; turn < 40 && !testing::Value(driver->read(), Contains("PageTab: Settings (focused)"));
         ++turn) {
        driver->key(Qt::Key_Tab);
    }
    driver->key(Qt::Key_Space);
    EXPECT_THAT(driver->read(), Contains(HasSubstr("Settings (selected)")));
}

TEST_F(Window, ChoosesADeviceRefusesWhatIsNoneAndKnowsItAgain) {
    makeDevice();
    open(false);
    EXPECT_THAT(driver->nameless(), IsEmpty());
    driver->flow().choose(folder.path());
    driver->run(5, [&] { return !driver->flow().refusal().empty(); });
    EXPECT_THAT(driver->read(), Contains(HasSubstr("does not tell its iOS version")));
    driver->flow().choose(device);
    driver->waitFor("Applications");
    EXPECT_THAT(driver->nameless(), IsEmpty());
    driver.reset();
    open(false);
    driver->press("My device");
    driver->waitFor("Applications");
}

TEST_F(Window, OpensDamagedSettingsOnlyWhenAskedTo) {
    makeDevice();
    folder.make("My device/Root/private/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist: damaged");
    open(false);
    driver->flow().choose(device);
    driver->press("Keep that file under another name and use the defaults");
    driver->waitFor("Ok"); // The name that it was kept under.
    EXPECT_THAT(driver->read(), Contains(HasSubstr("they were kept as")));
}

TEST_F(Window, TriesADemoDevice) {
    open(false);
    driver->press("Try a demo device");
    driver->waitFor("Applications", 60);
}

TEST(MountedDevices, AreKnownByTheNamesAtTheirTop) {
    const tests::TemporaryFolder folder;
    folder.make(
        "an ipod/private/var/mobile/Library/\nhome/user/Library/\nphone/Root/private/var/mobile/Library/");
    const auto mount = [&](const std::string& name) {
        return "36 35 98:0 / " + folder.path(name) + " rw - ext3 /dev/sdb rw\n";
    };
    EXPECT_THAT(
        mountedDevices(mount("an\\040ipod") + mount("home") + mount("phone") + mount("gone") + "broken\n"),
        ElementsAre(folder.path("an ipod"), folder.path("phone")));
}

/// What the toolkit's thread for pictures still holds when its engine ends, it never lets go.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ImageProvider::requestImageResponse\nleak:QQmlEngine::addImageProvider\nleak:libQt6Quick\n";
}

int main(int count, char** vector) {
    testing::InitGoogleTest(&count, vector);
    WindowDriver::prepareEnvironment();
    QQuickStyle::setStyle("Basic");
    QGuiApplication application(count, vector);
    return RUN_ALL_TESTS();
}
