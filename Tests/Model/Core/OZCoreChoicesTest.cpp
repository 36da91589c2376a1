#include "Model/Apps/OZAppList.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Device/Device.h"
#include "Tests/Model/Apps/AppTree.h"
#include "Tests/Support/EngineFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr std::string_view defaultsFile = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";
const std::string folderType = CustomFileRecord::directoryType;
const std::string fileType = CustomFileRecord::regularType;

class OZCoreChoicesTest : public testing::Test, public tests::EngineFixture {
  protected:
    platform::UserDefaults& defaults() { return device.device().standardUserDefaults(); }
    void store(const char* key, platform::Value value) { defaults().setObject(key, std::move(value)); }
};

TEST_F(OZCoreChoicesTest, refusesFileTypesThatADeviceNeeds) {
    struct {
        std::vector<std::string> given;
        bool refused;
        std::vector<std::string> kept;
    } const rows[] = {
        {{"bak", "PNG", "old_-%1", "données"}, false, {"bak", "PNG", "old_-%1", "données"}},
        {{"png", "bak"}, true, {"bak"}},
        {{"png"}, true, {}},
        {{"tar.gz", "a|b", "a*", "a b", "bad\xFF", "ok"}, true, {"ok"}},
        {{"", ""}, false, {"log", "logs", "tmp", "temp"}},
        {{}, false, {"log", "logs", "tmp", "temp"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(choices().setFileTypesExcludingIllegal(row.given), row.refused);
        EXPECT_EQ(choices().fileTypes(), row.kept);
    }
}

TEST_F(OZCoreChoicesTest, editsCustomFilesInTheUsersOrder) {
    choices().addCustomFile({.filePath = "/a", .fileType = fileType});
    choices().addCustomFile({.filePath = "/c", .fileType = fileType});
    choices().insertCustomFile({.filePath = "/b", .fileType = folderType}, 1);
    choices().addCustomFile({.filePath = "/d"});
    choices().addCustomFile({.fileType = fileType});
    const auto paths = [&] {
        std::string joined;
        for (const auto& record : choices().customFiles()) {
            joined += *record.filePath;
        }
        return joined;
    };
    EXPECT_EQ(paths(), "/a/b/c");
    choices().replaceCustomFile(0, choices().customFiles()[2]);
    EXPECT_EQ(paths(), "/c/b/c");
    choices().replaceCustomFile(1, {.filePath = "/incomplete"});
    EXPECT_EQ(paths(), "/c/c");
    EXPECT_THROW(choices().removeCustomFile(2), platform::AssertionFailure);
    EXPECT_THROW(choices().insertCustomFile(choices().customFiles()[0], 3), platform::AssertionFailure);
}

TEST_F(OZCoreChoicesTest, repairsWhatWasStoredBadly) {
    store("customFiles", platform::Array{"no dictionary", platform::Dictionary{{"filePath", "/only a path"}},
                                         platform::Dictionary{{"filePath", 3}, {"fileType", fileType}},
                                         platform::Dictionary{{"filePath", "/kept"},
                                                              {"fileType", folderType},
                                                              {"recursive", 1},
                                                              {"startPattern", ""},
                                                              {"endPattern", 5}}});
    store("fileTypes", platform::Array{"png", 7, "bak"});
    store("cleanupSettings", platform::Dictionary{{std::string(cleanupstep::cydiaSources), 1},
                                                  {std::string(cleanupstep::safari), "no number"},
                                                  {"UNKNOWN", true}});
    choices().loadDefaults();
    EXPECT_THAT(choices().customFiles(), ElementsAre(CustomFileRecord{.filePath = "/kept",
                                                                      .fileType = folderType,
                                                                      .recursive = true,
                                                                      .startPattern = "",
                                                                      .other = {{"endPattern", 5}}}));
    EXPECT_THAT(choices().fileTypes(), ElementsAre("bak"));
    EXPECT_EQ(choices().numberForCleanupSetting(cleanupstep::safari), platform::Value(true));
    EXPECT_EQ(choices().numberForCleanupSetting(cleanupstep::cydiaSources), platform::Value(1));
    EXPECT_FALSE(choices().numberForCleanupSetting("UNKNOWN"));

    for (const auto* key : {"customFiles", "fileTypes", "cleanupSettings"}) {
        store(key, "of another type");
    }
    choices().loadDefaults();
    EXPECT_THAT(choices().customFiles(), IsEmpty());
    EXPECT_EQ(choices().fileTypes(), CleanupChoices::defaultFileTypes());
    EXPECT_EQ(choices().cleanupSettings(), CleanupChoices::defaultCleanupSettings(device.device()));
}

TEST_F(OZCoreChoicesTest, recordsThatCannotBeReadWholeTakeNothingMoreAndStay) {
    addFiles({"/f/log", "/f/other", "/single", "/untyped"});
    const platform::Array stored{
        platform::Dictionary{
            {"filePath", "/f"}, {"fileType", folderType}, {"customFolderSetting", "2"}, {"note", "mine"}},
        platform::Dictionary{{"filePath", "/f"},
                             {"fileType", folderType},
                             {"customFolderSetting", uint64_t{1}},
                             {"startPattern", 5}},
        platform::Dictionary{{"filePath", "/single"}, {"fileType", ""}},
        platform::Dictionary{{"filePath", "/untyped"}, {"fileType", 4}}};
    store("customFiles", stored);
    choices().loadDefaults();
    clean({cleanupstep::customFiles});
    EXPECT_THAT(tree(), ElementsAre("/f/log", "/f/other"));
    choices().writeDefaults();
    EXPECT_EQ(defaults().arrayForKey("customFiles"), stored);
}

TEST_F(OZCoreChoicesTest, settingsWithEveryStepOffDoNotSurvive) {
    auto settings = CleanupChoices::defaultCleanupSettings(device.device());
    for (auto& [key, number] : settings) {
        number = 0;
    }
    store("cleanupSettings", settings);
    choices().loadDefaults();
    EXPECT_EQ(choices().cleanupSettings(), CleanupChoices::defaultCleanupSettings(device.device()));

    settings[std::string(cleanupstep::attachments)] = 2;
    store("cleanupSettings", settings);
    choices().loadDefaults();
    EXPECT_THAT(choices().enabledCleanupStepKeys(), ElementsAre(cleanupstep::attachments));
    EXPECT_EQ(choices().numberForCleanupSetting(cleanupstep::attachments)->unsignedValue(), 2);
}

TEST_F(OZCoreChoicesTest, emptyListsLeaveNoKeyBehind) {
    choices().addCustomFile({.filePath = "/a", .fileType = fileType});
    choices().addLanguageToRemove("French");
    choices().writeDefaults();
    EXPECT_TRUE(defaults().objectForKey("customFiles") && defaults().objectForKey("languagesToRemove"));
    choices().removeCustomFile(0);
    choices().removeAllLanguagesToRemove();
    choices().writeDefaults();
    EXPECT_FALSE(defaults().objectForKey("customFiles") || defaults().objectForKey("languagesToRemove"));
}

TEST_F(OZCoreChoicesTest, aLanguageInUseCannotStayMarked) {
    choices().setLanguagesToRemove(
        {"english", "Francais", "FRANÇ", "German", "Portuguese (Brazil)", "", "ish"});
    choices().removeLanguagesInUse(std::vector<std::string>{"English", "Français", "Portuguese"});
    EXPECT_THAT(choices().languagesToRemove(), ElementsAre("", "German", "Portuguese (Brazil)"));
}

/// One process after another over the same tree.
class StoredChoicesTest : public testing::Test {
  protected:
    struct Process {
        explicit Process(const TemporaryDevice& files)
            : device(platform::Device::open(files.folder()).value())
            , builder(*device) {}

        std::unique_ptr<platform::Device> device;
        OZModelBuilder builder;
    };

    StoredChoicesTest() {
        tests::AppTree tree(files);
        tree.addPlist("/System/Library/CoreServices/SystemVersion.plist", {{"ProductVersion", "11.1.2"}});
        tree.addBundle("/Applications/Maps.app", "com.apple.Maps");
    }

    TemporaryDevice files;
};

TEST_F(StoredChoicesTest, theNextProcessDoesWhatTheUserChose) {
    const CustomFileRecord record{.filePath = "/var/mobile/Ünterlagen",
                                  .fileType = folderType,
                                  .customFolderSetting = OZCustomFolderSetting::onlyFiles,
                                  .recursive = true,
                                  .startPattern = "a",
                                  .endPattern = "z"};
    {
        Process process(files);
        auto& core = process.builder.core();
        core.choices().setNumberForCleanupSetting(uint64_t{2}, cleanupstep::attachments);
        core.choices().setNumberForCleanupSetting(false, cleanupstep::safari);
        core.choices().addCustomFile(record);
        std::ignore = core.choices().setFileTypesExcludingIllegal({"bak"});
        core.choices().setLanguagesToRemove({"French", "German"});
        core.choices().setTestMode(true);
        process.builder.appList().setExclusionMask(OZExclusionMask::all, "com.apple.Maps");
        ASSERT_TRUE(process.device->standardUserDefaults().synchronize());
        core.choices().setTestMode(false);
    }
    Process process(files);
    auto& core = process.builder.core();
    EXPECT_EQ(core.choices().numberForCleanupSetting(cleanupstep::attachments)->unsignedValue(), 2);
    EXPECT_EQ(core.choices().numberForCleanupSetting(cleanupstep::safari)->boolValue(), false);
    EXPECT_THAT(core.choices().customFiles(), ElementsAre(record));
    EXPECT_THAT(core.choices().fileTypes(), ElementsAre("bak"));
    EXPECT_THAT(core.choices().languagesToRemove(), ElementsAre("French", "German"));
    EXPECT_TRUE(core.choices().testMode()) << "what is not saved is not stored";
    EXPECT_TRUE(process.builder.appList().isAppExcluded("com.apple.Maps"));
    EXPECT_TRUE(process.device->standardUserDefaults().boolForKey("warningPopups"));
}

TEST_F(StoredChoicesTest, aLanguageThatTheUserChoosesIsUnmarked) {
    Process process(files);
    auto& core = process.builder.core();
    core.choices().setLanguagesToRemove({"English", "French", "German"});
    process.builder.localizationManager().setUserLanguage("German");
    EXPECT_THAT(core.choices().languagesToRemove(), ElementsAre("French"));
}

TEST_F(StoredChoicesTest, aLanguageThatTheDeviceSpeaksByNowIsUnmarked) {
    {
        Process process(files);
        process.builder.core().choices().setLanguagesToRemove({"French", "German"});
        ASSERT_TRUE(process.device->standardUserDefaults().synchronize());
    }
    tests::AppTree(files).addPlist("/var/mobile/Library/Preferences/.GlobalPreferences.plist",
                                   {{"AppleLanguages", platform::Array{"de-AT"}}});
    Process next(files);
    EXPECT_EQ(next.builder.localizationManager().userLanguage(), "English");
    EXPECT_THAT(next.builder.core().choices().languagesToRemove(), ElementsAre("French"));
}

TEST_F(StoredChoicesTest, defaultsServeUntilSomethingIsSaved) {
    Process process(files);
    EXPECT_EQ(process.builder.core().choices().cleanupSettings(),
              CleanupChoices::defaultCleanupSettings(*process.device));
    EXPECT_FALSE(std::filesystem::exists(files.hostPath(defaultsFile)));
    // The interface may take the program with it when it restarts.
    process.device->setSleep([](double) {});
    process.builder.core().choices().setTestMode(true);
    process.builder.deviceActions().respring();
    Process next(files);
    EXPECT_TRUE(next.builder.core().choices().testMode());
}

} // namespace
