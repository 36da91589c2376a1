// Launch daemons of both generations: those that are moved, and those that the service manager is told about.

#include "Model/Items/Togglable/Daemons/OZDaemonList.h"

#include "Model/Builder/OZModelBuilder.h"
#include "Model/Items/Togglable/Daemons/OZDaemon.h"
#include "Model/Items/Togglable/Daemons/OZDaemonGroup.h"
#include "Model/Items/Togglable/Daemons/OZDaemonTable.h"
#include "Model/Items/Togglable/Restore/OZSystemRestore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Tests/Support/TemporaryDevice.h"

#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

constexpr double moved = 1240.1;
constexpr double overridden = 1300.0;
constexpr const char* reportCrash = "com.apple.ReportCrash";

class Daemons {
  public:
    explicit Daemons(double version)
        : device(platform::DeviceFacts{.foundationVersion = version}) {}

    void add(const std::string& identifier, const std::string& folder = "/System/Library/LaunchDaemons") {
        device.addFile(path(identifier, folder),
                       "<plist><dict><key>Label</key><string>" + identifier + "</string></dict></plist>");
    }
    /// The stand-in for the service manager's tool.
    void addServiceManager() const {
        const fs::path tool = device.folder() / "Tools/bin/launchctl";
        fs::create_directories(tool.parent_path());
        fs::permissions(tool.parent_path(), fs::perms(0755));
        fs::copy_file(OZ_STANDIN, tool);
        fs::permissions(tool, fs::perms(0755));
        std::ofstream(device.folder() / "Device.plist") << "<plist><dict/></plist>";
    }
    [[nodiscard]] bool has(const std::string& identifier, const std::string& folder) const {
        return fs::exists(device.hostPath(path(identifier, folder)));
    }
    static std::string path(const std::string& identifier, const std::string& folder) {
        return folder + "/" + identifier + ".plist";
    }
    [[nodiscard]] std::shared_ptr<OZDaemon> make(const std::string& identifier) {
        return OZDaemon::make(device.device(), identifier);
    }

    TemporaryDevice device;
    std::string language = "en";
    OZDaemonList list{device.device(), [this](std::string_view key) { return language + std::string(key); }};
};

Names keysOf(const OZTogglableItemMap& items) {
    Names keys;
    for (const auto& [key, item] : items) {
        keys.push_back(key);
    }
    return keys;
}

TEST(DaemonTable, NamesEveryDaemonOnce) {
    std::set<std::string_view> identifiers;
    size_t count = 0;
    for (const auto& group : daemonGroupTable) {
        identifiers.insert(group.identifier);
        ++count;
        for (const auto& daemon : group.daemons) {
            identifiers.insert(daemon.identifier);
            count += daemon.identifier.empty() ? 0 : 1;
        }
    }
    EXPECT_EQ(std::size(daemonGroupTable), 25);
    // The unused places of the table add the empty name.
    EXPECT_EQ(identifiers.size(), count + 1);
}

TEST(DaemonList, HoldsWhatTheDeviceHas) {
    Daemons daemons(moved);
    daemons.add("com.apple.homed");
    daemons.add("com.apple.syslogd", "/Library/LaunchDaemonsBAK");
    daemons.add(reportCrash);
    daemons.add("com.apple.unknown");
    EXPECT_THAT(keysOf(daemons.list.items()), ElementsAre("home", "log"));
    const auto log = std::dynamic_pointer_cast<OZDaemonGroup>(daemons.list.itemWithIdentifier("log"));
    ASSERT_NE(log, nullptr);
    EXPECT_THAT(keysOf(log->items()), ElementsAre(reportCrash, "com.apple.syslogd"));
    EXPECT_FALSE(log->enabledState());
    EXPECT_EQ(daemons.list.itemWithIdentifier("com.apple.homed")->title(), "homed");
    EXPECT_EQ(daemons.list.itemWithIdentifier("com.apple.unknown"), nullptr);

    EXPECT_EQ(daemons.list.itemWithIdentifier("home")->title(), "enHOMEKITDAEMONLBL");
    daemons.language = "de";
    daemons.list.localize();
    EXPECT_EQ(daemons.list.itemWithIdentifier("home")->itemDescription(), "deHOMEKITDAEMONMSG");
}

TEST(DaemonList, FollowsTheLanguageOfTheProgram) {
    Daemons daemons(moved);
    daemons.add("com.apple.syslogd");
    OZModelBuilder builder(daemons.device.device());
    auto& languages = builder.localizationManager();
    auto& list = builder.daemonList();
    EXPECT_EQ(&builder.daemonList(), &list);
    std::set<std::string> titles;
    for (const char* language : {"English", "German"}) {
        languages.setUserLanguage(language);
        titles.insert(list.itemWithIdentifier("log")->title());
        EXPECT_EQ(list.itemWithIdentifier("log")->title(), languages.localizedStringForKey("LOGDAEMONLBL"));
    }
    EXPECT_EQ(titles.size(), 2);
}

TEST(DaemonList, KeepsTheBoundsOfVersions) {
    for (const auto& [version, count] : {std::pair(1140.0, 2), {1140.11, 1}, {1141.1, 1}, {1141.2, 0}}) {
        Daemons daemons(version);
        daemons.add("com.apple.CrashHousekeeping");
        daemons.add("com.apple.mobile.softwareupdated");
        EXPECT_EQ(daemons.list.items().size(), count) << version;
    }
}

TEST(Daemon, TitlesAreShortIdentifiers) {
    Daemons daemons(moved);
    for (const auto& [identifier, title] :
         {std::pair("com.apple.a", "a"), {"com.apple.", "com.apple."}, {"org.a", "org.a"}}) {
        daemons.add(identifier);
        EXPECT_EQ(daemons.make(identifier)->title(), title);
    }
    EXPECT_EQ(daemons.make("com.apple.missing"), nullptr);
    EXPECT_THROW(daemons.make(""), platform::AssertionFailure);
}

TEST(FileDaemon, MovesBothOfItsPropertyLists) {
    Daemons daemons(moved);
    daemons.add(reportCrash);
    daemons.add(reportCrash, "/Library/LaunchDaemonsBAK");
    const auto daemon = daemons.make(reportCrash);
    EXPECT_TRUE(daemon->currentEnabledState());
    daemon->setEnabledState(false);
    EXPECT_TRUE(daemon->applyChanges());
    EXPECT_TRUE(daemons.has(reportCrash, "/System/Library/LaunchDaemonsBAK"));
    EXPECT_FALSE(daemons.has(reportCrash, "/System/Library/LaunchDaemons"));
    EXPECT_FALSE(daemon->currentEnabledState());
    daemon->setEnabledState(true);
    EXPECT_TRUE(daemon->applyChanges());
    EXPECT_TRUE(daemons.has(reportCrash, "/System/Library/LaunchDaemons"));
    EXPECT_TRUE(daemons.has(reportCrash, "/Library/LaunchDaemons"));
    EXPECT_TRUE(daemons.device.journal().empty());
}

TEST(FileDaemon, MovesBetweenLinkedFolders) {
    const std::string others[] = {"com.example.one", "com.example.two"};
    for (const double version : {moved, overridden}) {
        Daemons daemons(version);
        daemons.add("com.apple.awdd", "/usr/off");
        for (const auto& other : others) {
            daemons.add(other, "/usr/on");
        }
        daemons.device.addLink("/Library/LaunchDaemons", "/usr/on");
        daemons.device.addLink("/Library/LaunchDaemonsBAK", "../usr/off");
        auto& device = daemons.device.device();
        OZModelBuilder(device).systemRestore()->restore();
        EXPECT_TRUE(daemons.has("com.apple.awdd", "/usr/on"));
        EXPECT_TRUE(fs::is_symlink(daemons.device.hostPath("/Library/LaunchDaemons")));
        for (const auto& other : others) {
            EXPECT_TRUE(daemons.has(other, "/usr/on"));
        }
        const auto daemon = daemons.make("com.apple.awdd");
        daemon->setEnabledState(false);
        EXPECT_EQ(daemon->applyChanges(), version == moved);
        EXPECT_EQ(daemons.has("com.apple.awdd", "/usr/off"), version == moved);
        EXPECT_TRUE(fs::is_symlink(daemons.device.hostPath("/Library/LaunchDaemonsBAK")));
    }
}

TEST(FileDaemon, GivesPropertyListsBackToRootEvenWithoutAChange) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, or a user namespace that maps it";
    }
    Daemons daemons(moved);
    daemons.add(reportCrash);
    const fs::path file =
        daemons.device.hostPath(Daemons::path(reportCrash, "/System/Library/LaunchDaemons"));
    fs::permissions(file, fs::perms(0666));
    std::ignore = ::chown(file.c_str(), 0, 1);
    EXPECT_FALSE(daemons.make(reportCrash)->applyChanges());
    struct stat status = {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644);
    EXPECT_EQ(status.st_gid, 0);
}

TEST(OverrideDaemon, IsSwitchedByTheServiceManager) {
    Daemons daemons(overridden);
    daemons.addServiceManager();
    daemons.add(reportCrash);
    daemons.add(reportCrash, "/Library/LaunchDaemons");
    const auto daemon = daemons.make(reportCrash);
    EXPECT_TRUE(daemon->enabledState());
    EXPECT_FALSE(daemon->applyChanges());
    daemon->setEnabledState(false);
    EXPECT_TRUE(daemon->discardChanges());
    daemon->setEnabledState(false);
    fs::remove(daemons.device.folder() / "Journal.log");
    EXPECT_TRUE(daemon->applyChanges());
    EXPECT_THAT(daemons.device.journal(),
                ElementsAre("launchctl print-disabled",
                            "launchctl unload -w /System/Library/LaunchDaemons/com.apple.ReportCrash.plist",
                            "launchctl unload -w /Library/LaunchDaemons/com.apple.ReportCrash.plist"));
    EXPECT_FALSE(daemon->currentEnabledState());
    EXPECT_FALSE(daemons.make(reportCrash)->enabledState());
    EXPECT_TRUE(daemons.has(reportCrash, "/System/Library/LaunchDaemons"));
    daemon->setEnabledState(true);
    EXPECT_TRUE(daemon->applyChanges());
    EXPECT_TRUE(daemon->currentEnabledState());
}

TEST(OverrideDaemon, PropertyListsOfAnOlderSystemComeBackFirst) {
    Daemons daemons(overridden);
    daemons.addServiceManager();
    daemons.add(reportCrash, "/System/Library/LaunchDaemonsBAK");
    const auto daemon = daemons.make(reportCrash);
    EXPECT_TRUE(daemon->enabledState()) << "the service manager knows of nothing";
    EXPECT_FALSE(daemon->applyChanges());
    EXPECT_TRUE(daemons.has(reportCrash, "/System/Library/LaunchDaemons"));
}

TEST(OverrideDaemon, ReadsWhateverTheToolLists) {
    Daemons daemons(overridden);
    daemons.add("com.apple.a");
    const struct {
        const char* listing;
        bool enabled;
    } rows[] = {
        {"disabled services = {\n\t\"com.apple.a\" => true\n}", false},
        {"disabled services = {\n\t\"com.apple.a\" => false\n}", true},
        {"\t\"com.apple.a.b\" => true\n", true},
        {"com.apple.a=>true", false},
        {"\"com.apple.a\" => true\r\n\"com.apple.a\" => false\r\n", true},
        {"\"com.apple.a\" => true => true\n", true},
        {"\"com.apple.a\" => \"YES\"\n", false},
        {"\"com.apple.a\" => 0\n", true},
        {"\"com.apple.a\" => -02\n", false},
        {"", true},
    };
    for (const auto& row : rows) {
        daemons.device.addTool("/bin/launchctl", "cat <<'END'\n" + std::string(row.listing) + "\nEND");
        EXPECT_EQ(daemons.make("com.apple.a")->currentEnabledState(), row.enabled) << row.listing;
    }
    daemons.device.addTool("/bin/launchctl", "echo '\"com.apple.a\" => true'; kill -9 $$");
    EXPECT_TRUE(daemons.make("com.apple.a")->currentEnabledState()) << "half an answer is none";
}

TEST(OverrideDaemon, StopsAtAToolThatDoesNotRunAndNotAtItsStatus) {
    Daemons daemons(overridden);
    daemons.add(reportCrash);
    daemons.add(reportCrash, "/Library/LaunchDaemons");
    const auto daemon = daemons.make(reportCrash);
    daemon->setEnabledState(false);
    EXPECT_FALSE(daemon->applyChanges()) << "no tool";
    daemons.device.addNotingTool("/bin/launchctl", 1);
    EXPECT_TRUE(daemon->applyChanges());
    EXPECT_EQ(daemons.device.journal().size(), 3);
    daemons.device.addTool("/bin/launchctl", "[ \"$1\" = unload ] || exit 0\n"
                                             "echo $3 >> \"$OZVARINE_DEVICE/killed\"\nkill -9 $$");
    EXPECT_FALSE(daemon->applyChanges());
    EXPECT_EQ(fs::file_size(daemons.device.folder() / "killed"),
              Daemons::path(reportCrash, "/System/Library/LaunchDaemons").size() + 1);
    EXPECT_FALSE(daemon->enabledState());
}

} // namespace
