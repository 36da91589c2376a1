#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"

#include "Model/Apps/OZAppList.h"
#include "Model/Tasks/OZTask.h"
#include "Tests/Model/Items/ItemTitles.h"
#include "Tests/Support/TemporaryDevice.h"

#include <fstream>
#include <map>

#include <gmock/gmock.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
using tests::deleteRow;
using tests::titlesOf;

namespace {

constexpr double iOS7 = 1047.25;
constexpr double iOS11 = 1445.32;
const std::string mobileFolder = "/var/mobile/Library/Preferences/";
const std::string rootFolder = "/var/root/Library/Preferences/";

class Delegate : public OZPrefDaemonReloadDelegate {
  public:
    void prefDaemonReloadStarted() override { events.emplace_back("started"); }
    void prefDaemonReloadEnded() override { events.emplace_back("ended"); }

    std::vector<std::string> events;
};

/// A device with the time of its main queue in the test's hands.
class PreferenceDevice {
  public:
    explicit PreferenceDevice(double foundationVersion, platform::Array apps = {})
        : device(facts(foundationVersion, std::move(apps))) {
        device.device().mainQueue().setManualClock(true);
        _ends = platform::Observation(device.device().notificationCenter(), OZTaskDidTerminateNotification,
                                      nullptr, [this](const auto&) { ++_endCount; });
    }
    OZPreferenceFileList& list() {
        if (!_list) {
            _apps = std::make_unique<OZAppList>(device.device());
            _list = std::make_unique<OZPreferenceFileList>(
                device.device(), _apps.get(), [this](std::string_view identifier) {
                    const auto found = packages.find(identifier);
                    return found == packages.end() ? std::nullopt : std::optional(found->second);
                });
            _list->setPrefDaemonReloadDelegate(&delegate);
        }
        return *_list;
    }
    void closeList() { _list.reset(); }
    void pass(double seconds) {
        device.device().mainQueue().advance(seconds);
        device.device().mainQueue().runPending();
    }
    // The tool is a process of its own, whose end comes when it comes.
    bool waitForEndOfTool(size_t run = 1) {
        return device.device().mainQueue().runUntil([&] { return _endCount == run; }, 30);
    }

    TemporaryDevice device;
    std::map<std::string, OZPackageLabel, std::less<>> packages;
    Delegate delegate;

  private:
    static platform::DeviceFacts facts(double foundationVersion, platform::Array apps) {
        platform::DeviceFacts facts{.foundationVersion = foundationVersion};
        facts.applications = std::move(apps);
        return facts;
    }

    platform::Observation _ends;
    size_t _endCount = 0;
    std::unique_ptr<OZAppList> _apps;
    std::unique_ptr<OZPreferenceFileList> _list;
};

platform::Dictionary appInfo(const std::string& identifier, const std::string& name) {
    return {{"ApplicationType", "System"},
            {"Path", "/Applications/App.app"},
            {"CFBundleExecutable", "Main"},
            {"CFBundleIdentifier", identifier},
            {"CFBundleDisplayName", name}};
}

TEST(PreferenceFile, IsTitledByItsNameWithoutTheMakersPart) {
    TemporaryDevice device;
    const struct {
        const char* name;
        const char* title;
    } cases[] = {
        {"com.foo.bar.baz.plist", "bar_baz"},
        {"com.foo.bar.plist", "bar"},
        {"foo.bar.plist", "bar"},
        {"foo.plist", "foo"},
        {".foo.plist", "foo"},
        {"com.été.Größe.plist", "Größe"},
    };
    for (const auto& [name, title] : cases) {
        const OZPreferenceFile file(device.device(), mobileFolder + name);
        EXPECT_EQ(file.title(), title);
        EXPECT_EQ(file.identifier(), mobileFolder + name);
    }
}

TEST(PreferenceFileList, ShowsTheFilesOfOthersUnderTheirOwnersNames) {
    PreferenceDevice test(iOS11, {appInfo("org.app", "Zoë's App"), appInfo("odd id", "Odd")});
    auto& device = test.device;
    device.addFile("/Applications/App.app/Main");
    for (const char* name :
         {"org.app.plist", "odd id.plist", "com.saurik.WinterBoard.plist", "org.pkg.plist",
          "org.x.nobody.plist", "kbd.plist", "my.com.apple.thing.plist", "com.apple.Maps.plist",
          "${PRODUCT_NAME}.plist", "notes.txt", "below/org.pkg.plist"}) {
        device.addFile(mobileFolder + name);
    }
    device.addFile(rootFolder + "org.app.plist");
    device.addFile(rootFolder + ".GlobalPreferences.plist");
    device.addFile("/var/mobile/Library/Caches/libactivator.plist");
    test.packages = {{"winterboard", {"WinterBoard Theme", "file:///w.png"}},
                     {"org.pkg", {"émigré", std::nullopt}},
                     {"org.app", {"The package of the app", std::nullopt}},
                     {"libactivator", {"Activator", "file:///a.png"}}};

    const auto items = test.list().allItems();
    EXPECT_THAT(titlesOf(test.list()), ElementsAre("Activator (settings)", "nobody", "Odd",
                                                   "WinterBoard Theme", "Zoë's App", "Zoë's App", "émigré"));
    EXPECT_THAT(items[0]->iconURL(), Optional(Eq("file:///a.png")));
    EXPECT_EQ(items[1]->iconURL(), std::nullopt);
    EXPECT_THAT(items[2]->iconURL(), Optional(Eq("OZAppId://odd%20id/")));
    EXPECT_THAT(items[3]->iconURL(), Optional(Eq("file:///w.png")));
    EXPECT_THAT(items[4]->iconURL(), Optional(Eq("OZAppId://org.app/")));
    // Of equal titles the one that was found first comes first.
    EXPECT_EQ(items[4]->identifier(), mobileFolder + "org.app.plist");
    EXPECT_EQ(items[5]->identifier(), rootFolder + "org.app.plist");
    EXPECT_EQ(items[6]->iconURL(), std::nullopt);

    test.list().deleteItemAtIndex(5);
    EXPECT_FALSE(fs::exists(device.hostPath(rootFolder + "org.app.plist")));
    EXPECT_TRUE(fs::exists(device.hostPath(mobileFolder + "org.app.plist")));
    EXPECT_THAT(test.list().preferenceFiles(), SizeIs(6));
}

TEST(PreferenceFileList, NeedsBothOfItsSources) {
    TemporaryDevice device;
    const OZAppList apps(device.device());
    const OZPreferenceFileList::PackageLabels labels = [](auto) { return std::nullopt; };
    try {
        const OZPreferenceFileList list(device.device(), nullptr, labels);
        ADD_FAILURE() << "it has no applications";
    } catch (const platform::AssertionFailure& failure) {
        EXPECT_STREQ(failure.what(), "Invalid parameter not satisfying: appList && packageWorkspace");
    }
    EXPECT_THROW(OZPreferenceFileList(device.device(), &apps, {}), platform::AssertionFailure);
}

const char* const kickstart = "launchctl kickstart -k system/com.apple.cfprefsd.xpc.daemon";

/// A device with the files "a" to "e".
class PreferenceReload : public testing::Test {
  protected:
    static void fill(PreferenceDevice& test) {
        for (const char* name : {"a", "b", "c", "d", "e"}) {
            test.device.addFile(mobileFolder + name + ".plist");
        }
    }
    static void deleteFiles(PreferenceDevice& test, std::initializer_list<const char*> titles) {
        for (const char* title : titles) {
            deleteRow(test.list(), title);
        }
    }
    void SetUp() override {
        fill(test);
        test.device.addNotingTool("/bin/launchctl");
    }
    PreferenceDevice test{iOS11};
};

TEST_F(PreferenceReload, FollowsTheLastOfSeveralDeletionsByTwoSeconds) {
    for (const char* title : {"a", "b", "c"}) {
        test.pass(1.5);
        deleteFiles(test, {title});
    }
    test.pass(1.75);
    EXPECT_THAT(test.delegate.events, IsEmpty());
    EXPECT_EQ(test.list().prefDaemonReloadTask(), nullptr);
    test.pass(0.25);
    EXPECT_THAT(test.delegate.events, ElementsAre("started"));
    ASSERT_TRUE(test.waitForEndOfTool());
    EXPECT_THAT(test.device.journal(), ElementsAre(kickstart));

    test.pass(1.75);
    EXPECT_NE(test.list().prefDaemonReloadTask(), nullptr) << "it is cooling down";
    test.pass(0.25);
    EXPECT_THAT(test.delegate.events, ElementsAre("started", "ended"));
    EXPECT_EQ(test.list().prefDaemonReloadTask(), nullptr);
    EXPECT_THAT(titlesOf(test.list()), ElementsAre("d", "e"));
}

TEST_F(PreferenceReload, IsLostForADeletionDuringAnother) {
    test.device.addTool("/bin/launchctl", "echo launchctl $* >> $OZVARINE_DEVICE/Journal.log\n"
                                          "until [ -e $OZVARINE_DEVICE/stop ]; do sleep 0.01; done");
    test.list().reloadPrefDaemon();
    deleteFiles(test, {"a"});
    test.pass(2);
    EXPECT_THAT(test.delegate.events, ElementsAre("started")) << "the first one still runs";
    test.list().reloadPrefDaemon();

    std::ofstream(test.device.folder() / "stop") << "now";
    ASSERT_TRUE(test.waitForEndOfTool());
    deleteFiles(test, {"b"});
    test.pass(2);
    EXPECT_THAT(test.delegate.events, ElementsAre("started", "ended"));
    EXPECT_THAT(test.device.journal(), ElementsAre(kickstart));

    deleteFiles(test, {"c"});
    test.pass(2);
    EXPECT_THAT(test.delegate.events, ElementsAre("started", "ended", "started"));
    ASSERT_TRUE(test.waitForEndOfTool(2));
    EXPECT_THAT(test.device.journal(), ElementsAre(kickstart, kickstart));
}

TEST_F(PreferenceReload, EndsWhateverBecomesOfTheTool) {
    fs::remove(test.device.folder() / "Tools/bin/launchctl");
    test.list().reloadPrefDaemon();
    EXPECT_THAT(test.delegate.events, IsEmpty()) << "there is no tool";
    // One that is there and cannot be started.
    test.device.addTool("/bin/launchctl", "");
    std::ofstream(test.device.folder() / "Tools/bin/launchctl") << "#!/no/such/interpreter\n";
    test.list().reloadPrefDaemon();
    ASSERT_TRUE(test.waitForEndOfTool());
    test.pass(2);
    EXPECT_THAT(test.delegate.events, ElementsAre("started", "ended"));
    EXPECT_EQ(test.list().prefDaemonReloadTask(), nullptr);
}

TEST_F(PreferenceReload, NeverComesWhereTheDaemonNeedsNone) {
    PreferenceDevice older(iOS7);
    fill(older);
    older.device.addNotingTool("/bin/launchctl");
    deleteFiles(older, {"a", "b"});
    older.pass(60);
    older.list().reloadPrefDaemon();
    EXPECT_THAT(older.delegate.events, IsEmpty());
    EXPECT_THAT(older.device.journal(), IsEmpty());
    EXPECT_THAT(titlesOf(older.list()), ElementsAre("c", "d", "e"));
}

TEST_F(PreferenceReload, GoesWithTheList) {
    deleteFiles(test, {"a"});
    test.closeList();
    test.pass(60);
    EXPECT_THAT(test.delegate.events, IsEmpty());
    test.list().reloadPrefDaemon();
    test.closeList();
    test.pass(60);
    EXPECT_THAT(test.delegate.events, ElementsAre("started"));
}

} // namespace
