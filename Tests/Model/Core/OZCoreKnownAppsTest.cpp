// What the rules for well-known applications take, and in which order the log tells it.

#include "Tests/Model/Core/EngineTest.h"

#include <fstream>

#include <sys/stat.h>

using platform::Dictionary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const std::string preferences = "/c/Library/Preferences/net.box.BoxNet.plist";

class KnownApps : public EngineTest {
  protected:
    void addUserApp(const std::string& identifier) {
        addApp(identifier, OZAppType::user, "/b/" + identifier + "/X.app", "/c");
    }
    /// Runs an installed user application's rule over a tree and gives what the log names.
    Paths logged(const std::string& identifier, const Paths& files, OZCoreMode mode = OZCoreMode::clean) {
        addUserApp(identifier);
        addFiles(files);
        cleanKnownApp(engine(mode), identifier);
        return loggedPaths();
    }
};

} // namespace

TEST_F(KnownApps, ActionsStandInTheLogInTheirOrder) {
    const std::string chrome = "/c/Library/Application Support/Google/Chrome/Default/";
    EXPECT_THAT(logged("com.google.chrome.ios",
                       {"/c/Library/Cookies/Cookies.binarycookies", chrome + "LocalStorage/d/x",
                        chrome + "OTR/y", chrome + "Last Tabs", chrome + "Current Tabs", chrome + "History",
                        chrome + "Bookmarks", chrome + "History Index/kept"}),
                ElementsAre("./Library/Application Support/Google/Chrome/Default/Current Tabs",
                            "./Library/Application Support/Google/Chrome/Default/Last Tabs",
                            "./Library/Application Support/Google/Chrome/Default/History",
                            "./Library/Cookies/Cookies.binarycookies",
                            "./Library/Application Support/Google/Chrome/Default/OTR/y",
                            "./Library/Application Support/Google/Chrome/Default/LocalStorage/d",
                            "./Library/Application Support/Google/Chrome/Default/LocalStorage/d/x"));
    EXPECT_THAT(log(), HasSubstr("\n##\nIn dir: /c\n##\n\n"));
    EXPECT_THAT(tree(), testing::IsSupersetOf({chrome + "Bookmarks", chrome + "History Index/kept",
                                               chrome + "LocalStorage/", chrome + "OTR/"}));
}

TEST_F(KnownApps, NamesAreTakenByTheirBeginningOrTheirEnd) {
    EXPECT_THAT(
        logged("com.google.GooglePlus", {"/c/gplus-log-1", "/c/x-gplus-log-", "/c/gplus-log-folder/kept",
                                         "/c/Documents/MediaUploader1", "/c/Documents/Model.sqlite"}),
        ElementsAre("./Documents/Model.sqlite", "./Documents/MediaUploader1", "./gplus-log-1"));
    EXPECT_THAT(logged("com.burbn.instagram", {"/c/Documents/a.coded", "/c/Documents/.coded.txt",
                                               "/c/a.coded", "/c/Documents/folder.coded/kept"}),
                ElementsAre("./Documents/a.coded"));
}

TEST_F(KnownApps, OtherModesRenameOrOnlyCount) {
    const Paths files = {"/c/Library/Cookies/a", "/c/Library/Mercury/cache/d/b", "/c/Library/kept"};
    EXPECT_THAT(
        logged("com.ilegendsoft.MBrowserPro", files, OZCoreMode::analyze),
        ElementsAre("./Library/Cookies/a", "./Library/Mercury/cache/d", "./Library/Mercury/cache/d/b"));
    EXPECT_THAT(tree(), testing::IsSupersetOf(files));
    logged("com.ilegendsoft.MBrowserPro", {}, OZCoreMode::test);
    EXPECT_THAT(tree(),
                testing::IsSupersetOf({"/c/Library/Cookies/a.OzvarineBackup",
                                       "/c/Library/Mercury/cache/d.OzvarineBackup/b", "/c/Library/kept"}));
}

TEST_F(KnownApps, OtherApplicationsAndMissingContainersAreLeftAlone) {
    addFiles({"/c/Library/Cookies/a"});
    addApp("com.facebook.Messenger", OZAppType::system, "/Applications/M.app", "/c");
    addApp("com.badoo.Badoo", OZAppType::user, "/b/B.app", "/missing");
    addUserApp("org.example.unknown");
    addFiles({"/log.txt", "/var/mobile/Library/Filza/.Trash/x"});
    auto& core = engine();
    for (const char* identifier : {"com.facebook.Messenger", "com.badoo.Badoo", "org.example.unknown",
                                   "com.spotify.client", "com.tigisoftware.Filza"}) {
        cleanKnownApp(core, identifier);
    }
    EXPECT_EQ(core.fileCount(), 0);
    EXPECT_THAT(log(), Not(HasSubstr("In dir")));
}

TEST_F(KnownApps, RulesForSystemApplicationsDoNotMeanUserApplications) {
    temporary.addNotingTool("/usr/bin/killall");
    EXPECT_THAT(
        logged("com.itaysoft.icaughtuproapp", {"/b/com.itaysoft.icaughtuproapp/X.app/log.txt", "/c/log.txt"}),
        IsEmpty());
    EXPECT_THAT(logged("eu.heinelt.ifile", {"/var/mobile/Library/iFile/Trash/x"}), IsEmpty());
    EXPECT_THAT(log(), HasSubstr("In dir: /c"));
    EXPECT_THAT(temporary.journal(), IsEmpty());
}

TEST_F(KnownApps, SystemApplicationsAreCleanedWhereTheyKeepTheirThings) {
    temporary.addNotingTool("/usr/bin/killall");
    addApp("eu.heinelt.ifile", OZAppType::system, "/Applications/iFile.app");
    addApp("com.itaysoft.icaughtuproapp", OZAppType::system, "/Applications/iCU.app");
    addApp("com.tigisoftware.Filza", OZAppType::system, "/Applications/Filza.app");
    addFiles({"/var/mobile/Library/iFile/Cache/x", "/var/mobile/Library/iFile/Trash/f/y",
              "/Applications/iCU.app/.dat1", "/Applications/iCU.app/log.txt",
              "/Applications/iCU.app/kept.dat", "/Applications/iCU.app/.data/kept",
              "/var/mobile/Library/Filza/.Trash/z"});
    auto& core = engine(OZCoreMode::analyze);
    cleanKnownApp(core, "eu.heinelt.ifile");
    cleanKnownApp(core, "com.itaysoft.icaughtuproapp");
    cleanKnownApp(core, "com.tigisoftware.Filza");
    EXPECT_THAT(loggedPaths(),
                ElementsAre("/var/mobile/Library/iFile/Trash/f", "/var/mobile/Library/iFile/Trash/f/y",
                            "/var/mobile/Library/iFile/Cache/x", "/Applications/iCU.app/log.txt",
                            "/Applications/iCU.app/.dat1", "/var/mobile/Library/Filza/.Trash/z"));
    EXPECT_THAT(temporary.journal(), ElementsAre("killall -9 iFile_ iFile2 iFile3 iFile4"));
}

TEST_F(KnownApps, PreferencesForgetThreeKeysInEveryModeAndKeepTheRest) {
    const Dictionary kept{{"date", platform::Date{1.5}},
                          {"data", platform::Data{std::string("\0\xff", 2)}},
                          {"number", uint64_t{1} << 63U},
                          {"real", 0.1},
                          {"yes", true},
                          {"nested", Dictionary{{"jobRepositoryLastSchemaNb", platform::Array{1, "x"}}}}};
    Dictionary full = kept;
    for (const char* key : {"jobCollectionRepositoryLastSchemaNb", "jobRepositoryLastSchemaNb",
                            "jobTaskRepositoryLastSchemaNb"}) {
        full[key] = 7;
    }
    addUserApp("net.box.BoxNet");
    for (const auto format : {platform::PropertyListFormat::xml, platform::PropertyListFormat::binary}) {
        for (const auto mode : {OZCoreMode::clean, OZCoreMode::analyze, OZCoreMode::test}) {
            temporary.addFile(preferences, platform::serializePropertyList(full, format));
            auto& core = engine(mode);
            cleanKnownApp(core, "net.box.BoxNet");
            EXPECT_EQ(temporary.contents(preferences), platform::serializePropertyList(kept, format));
            EXPECT_EQ(core.fileCount(), 0);
            struct stat status {};
            ASSERT_EQ(::stat(temporary.hostPath(preferences).c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 07777U, 0600U);
            EXPECT_EQ(status.st_uid, 501U);
            EXPECT_EQ(status.st_gid, 501U);
        }
    }
    EXPECT_EQ(tree(), (Tree{preferences, "/b/net.box.BoxNet/X.app/program"}));
}

TEST_F(KnownApps, PreferencesInTheTextFormatAreWrittenAsXmlWithAllTheyHold) {
    addUserApp("net.box.BoxNet");
    temporary.addFile(preferences,
                      "{ jobRepositoryLastSchemaNb = 7; a = ( 1, <00ff>, { b = \"\\U00e4\"; } ); }");
    cleanKnownApp(engine(), "net.box.BoxNet");
    const Dictionary kept{
        {"a", platform::Array{"1", platform::Data{std::string("\0\xff", 2)}, Dictionary{{"b", "ä"}}}}};
    EXPECT_EQ(temporary.contents(preferences),
              platform::serializePropertyList(kept, platform::PropertyListFormat::xml));
}

TEST_F(KnownApps, PreferencesThatCannotBeReadStayAsTheyAre) {
    addUserApp("net.box.BoxNet");
    cleanKnownApp(engine(), "net.box.BoxNet");
    EXPECT_FALSE(std::filesystem::exists(temporary.hostPath(preferences)));
    temporary.addFile(preferences, "no property list");
    cleanKnownApp(engine(), "net.box.BoxNet");
    EXPECT_EQ(temporary.contents(preferences), "no property list");
}

TEST_F(KnownApps, PreferencesThatAreAnotherNameOfAFileLeaveThatFileAlone) {
    addUserApp("net.box.BoxNet");
    addFiles({"/Library/root.plist"},
             platform::serializePropertyList(Dictionary{}, platform::PropertyListFormat::xml));
    std::filesystem::create_directories(temporary.hostPath("/c/Library/Preferences"));
    std::filesystem::create_hard_link(temporary.hostPath("/Library/root.plist"),
                                      temporary.hostPath(preferences));
    cleanKnownApp(engine(), "net.box.BoxNet");
    struct stat status {};
    ASSERT_EQ(::stat(temporary.hostPath("/Library/root.plist").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_nlink, 1U);
}
