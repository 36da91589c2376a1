#include "Model/Core/OZAction.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Model/Core/EngineTest.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fstream>
#include <optional>
#include <regex>
#include <sstream>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double beforeCarrierBundles = 993.0;

// One engine with the languages of a test's own table, or of the program's.
class OZCoreLanguages : public EngineTest {
  protected:
    void SetUp() override {}

    void setTable(const std::string& table) {
        std::ofstream(_resources.path("lang")) << table;
        std::ofstream(_resources.path("English.strings")) << "\"LANGNAME\" = \"English\";";
        std::ofstream(_resources.path("French.strings")) << "\"LANGNAME\" = \"Français\";";
        _bundle.emplace(_resources.path());
    }
    void setSystemLanguage(const std::string& identifier) {
        temporary.addFile("/var/mobile/Library/Preferences/.GlobalPreferences.plist",
                          platform::serializePropertyList(
                              platform::Dictionary{{"AppleLanguages", platform::Array{identifier}}},
                              platform::PropertyListFormat::binary));
    }

    OZCore& engineFor(CleanupChoices::LanguageNames languages, OZCoreMode mode = OZCoreMode::clean) {
        const auto folder = temporary.folder();
        _core.reset();
        _manager.reset();
        _device = std::make_unique<platform::Device>(
            platform::FileManager::atRoot(folder / "Root").value(), facts,
            platform::ToolTable(folder / "Tools", folder, folder / "Root"));
        if (!_bundle) {
            _bundle.emplace();
        }
        _manager =
            std::make_unique<OZLocalizationManager>(*_device, _device->standardUserDefaults(), *_bundle);
        _inventory = std::make_unique<OZAppList>(*_device);
        _core = std::make_unique<OZCore>(*_device, *_inventory, *_manager);
        _core->setCleanupLogger(std::make_unique<OZCleanupLogger>(*_device));
        _core->choices().setLanguagesToRemove(std::move(languages));
        _core->choices().setTestMode(mode == OZCoreMode::test);
        return *_core;
    }
    // What an action takes out of the tree.
    Tree goneAfter(OZCore& core, OZAction action) {
        const auto before = tree();
        core.remove(action, Analyze::no);
        return difference(before, tree());
    }

    OZLocalizationManager& manager() { return *_manager; }
    OZAppList& inventory() { return *_inventory; }

  private:
    tests::TemporaryFolder _resources;
    std::optional<platform::Bundle> _bundle;
    std::unique_ptr<platform::Device> _device;
    std::unique_ptr<OZLocalizationManager> _manager;
    std::unique_ptr<OZAppList> _inventory;
    std::unique_ptr<OZCore> _core;
};

// Searches run the host's own tools.
class OZCoreLanguageRemoval : public OZCoreLanguages {
  protected:
    void SetUp() override { EngineTest::SetUp(); }
};

} // namespace

TEST_F(OZCoreLanguages, TurnNamesIntoExpressions) {
    setTable("German de\n\n \t \r\nChinese\tzh  zh[-_]Han[st] yue\nFrench fr\n");
    auto& core = engineFor({"German", "Klingon"});
    EXPECT_THAT(core.choices().languageRegexComponentsShort(false), ElementsAre("German", "de", "de[-_].."));
    EXPECT_THAT(core.choices().languageRegexComponentsShort(true), ElementsAre("de"));
    core.choices().setLanguagesToRemove({"Chinese"});
    EXPECT_THAT(core.choices().languageRegexComponentsShort(false),
                ElementsAre("Chinese", "zh", "zh[-_]..", "zh[-_]Han[st]", "yue"));
    EXPECT_THAT(core.choices().languageRegexComponentsShort(true), ElementsAre("zh"));
    core.choices().removeAllLanguagesToRemove();
    EXPECT_THAT(core.choices().languageRegexComponentsShort(false), IsEmpty());
}

TEST_F(OZCoreLanguageRemoval, TakesNothingWhereNobodyCanTellTheLanguageInUse) {
    const std::string preferences = "/var/mobile/Library/Preferences/.GlobalPreferences.plist";
    const struct {
        const char* content;
        bool isKnown;
    } rows[] = {
        {"<plist version=\"1.0\"><dict><key>AppleLang", false},
        {"<plist version=\"1.0\"><array/></plist>", false},
        {"<plist version=\"1.0\"><dict><key>AppleLanguages</key><string>de</string></dict></plist>", false},
        {"<plist version=\"1.0\"><dict/></plist>", true}};
    for (const auto& [content, isKnown] : rows) {
        temporary.addFile("/Applications/A.app/de.lproj/text");
        temporary.addFile(preferences, content);
        testing::internal::CaptureStderr();
        EXPECT_EQ(goneAfter(engineFor({"German"}), OZAction::removeLanguages).empty(), !isKnown) << content;
        EXPECT_EQ(testing::internal::GetCapturedStderr().contains("language in use"), !isKnown) << content;
    }
}

TEST_F(OZCoreLanguages, AreReadAgainUntilTheTableIsThere) {
    setTable("Fran\xC3\xA7"
             "ais fr\n");
    auto& core = engineFor({"German"});
    EXPECT_THAT(core.choices().removableLanguages(), IsEmpty());
    setTable("\n \n");
    EXPECT_THAT(core.choices().languageRegexFileLines(), IsEmpty());
    setTable("German de\n");
    EXPECT_THAT(core.choices().removableLanguages(), ElementsAre("German"));
    setTable("Italian it\n");
    EXPECT_THAT(core.choices().removableLanguages(), ElementsAre("German"));
}

TEST_F(OZCoreLanguages, InUseCannotBeChosen) {
    setTable("Norwegian no\nEnglish en\nGerman de\nFrench fr\nBokmal nb\nDutch nl\n");
    setSystemLanguage("nb");
    auto& core = engineFor({});
    EXPECT_THAT(core.choices().removableLanguages(), ElementsAre("German", "French", "Dutch"));
    manager().setUserLanguage("French");
    EXPECT_THAT(core.choices().removableLanguages(), ElementsAre("German", "Dutch"));
}

TEST_F(OZCoreLanguages, OfTheProgramsTableAreSafeToRemove) {
    auto& core = engineFor({});
    std::set<std::string> names;
    for (const auto& name : core.choices().removableLanguages()) {
        EXPECT_TRUE(names.insert(name).second) << name << " twice";
        core.choices().setLanguagesToRemove({name});
        // Without a code, whole folders of other languages would go.
        EXPECT_FALSE(core.choices().languageRegexComponentsShort(true).empty()) << name;
        std::string expression = "^.*(";
        for (const auto& component : core.choices().languageRegexComponentsShort(false)) {
            expression += component + "|";
        }
        expression.back() = ')';
        const std::regex folders(expression + "\\.lproj$", std::regex::extended);
        EXPECT_TRUE(std::regex_match("/a/" + name + ".lproj", folders)) << name;
        for (const std::string kept :
             {"Base", "English", "en", "en_GB", "en-GB", "en_AU", "en-IN", "en-001"}) {
            EXPECT_FALSE(std::regex_match("/a/" + kept + ".lproj", folders)) << name << " takes " << kept;
        }
    }
    EXPECT_GT(names.size(), 30U);
    for (const auto& language : manager().languageNames()) {
        const auto name = language.substr(0, language.find(' '));
        EXPECT_EQ(names.contains(name), name != "English") << language;
    }
}

TEST_F(OZCoreLanguageRemoval, TakesFoldersAllOverTheDevice) {
    const Paths gone = {"/A.framework/de.lproj/a",
                        "/A.framework/de_CH.lproj/a",
                        "/A.framework/de-AT.lproj/a",
                        "/var/x/German.lproj/sub/a",
                        "/usr/share/mecabra/de/a",
                        "/usr/share/tokenizer/xde/a",
                        "/Applications/Ozvarine.app/German.strings"};
    const Paths kept = {"/A.framework/en.lproj/a",
                        "/A.framework/Base.lproj/a",
                        "/A.framework/fr.lproj/a",
                        "/A.framework/file/de.lproj",
                        "/Applications/Notes (Beta).app/de.lproj/a",
                        "/var/mobile/Containers/Data/1/de.lproj/a",
                        "/usr/share/mecabra/deep/de/a",
                        "/usr/share/mecabra/fr/a",
                        "/Applications/Ozvarine.app/French.strings",
                        "/Applications/Ozvarine.app/German.txt"};
    const std::string carrier = "/System/Library/Carrier Bundles/C.bundle/de.lproj/a";
    for (const double version : {beforeCarrierBundles, 1445.32}) {
        addFiles(gone);
        addFiles(kept);
        addFiles({carrier});
        temporary.addFile("/elsewhere/a");
        std::filesystem::remove(temporary.hostPath("/A.framework/link.de.lproj"));
        temporary.addLink("/A.framework/link.de.lproj", "/elsewhere");
        facts.foundationVersion = version;
        facts.applications->clear();
        addApp("com.example.notes", OZAppType::system, "/Applications/Notes (Beta).app");
        addApp("com.example.user", OZAppType::user, "/var/containers/Bundle/Application/2/User.app",
               "/var/mobile/Containers/Data/1");
        auto& core = engineFor({"German"});
        for (const auto* identifier : {"com.example.notes", "com.example.user"}) {
            inventory().setExclusionMask(OZExclusionMask::languages, identifier);
        }
        Tree expected(gone.begin(), gone.end());
        if (version == beforeCarrierBundles) {
            expected.insert(carrier);
        }
        EXPECT_EQ(goneAfter(core, OZAction::removeLanguages), expected);
        EXPECT_EQ(core.fileCount(), expected.size());
    }
}

TEST_F(OZCoreLanguageRemoval, CountsInAnalysisWhatItTakesAndRestoresItFromATest) {
    addFiles({"/A/de.lproj/a", "/A/de.lproj/b/c", "/B/German.lproj/a"}, "1234567890");
    const auto before = tree();
    auto& core = engineFor({"German"}, OZCoreMode::test);
    core.remove(OZAction::removeLanguages, Analyze::yes);
    EXPECT_EQ(core.fileCount(), 2U);
    EXPECT_GE(core.freedSpace(), 30U);
    EXPECT_EQ(tree(), before);
    core.remove(OZAction::removeLanguages, Analyze::no);
    EXPECT_EQ(core.fileCount(), 2U);
    EXPECT_TRUE(tree().contains("/A/de.lproj.OzvarineBackup/b/c"));
    core.backup(BackupAction::restore);
    EXPECT_EQ(tree(), before);
}

// A language without a two-letter code fits every folder of the input data.
TEST_F(OZCoreLanguageRemoval, WithoutACodeTakesAllInputData) {
    setTable("Klingon tlh\n");
    addFiles({"/usr/share/mecabra/ja/a", "/usr/share/mecabra/file", "/usr/share/tokenizer/zh/a",
              "/usr/share/other/a"});
    const auto before = tree();
    auto& core = engineFor({"Klingon"}, OZCoreMode::test);
    core.remove(OZAction::removeLanguages, Analyze::yes);
    EXPECT_EQ(core.fileCount(), 4U);
    EXPECT_EQ(tree(), before);
    core.remove(OZAction::removeLanguages, Analyze::no);
    EXPECT_EQ(core.fileCount(), 2U);
    EXPECT_TRUE(tree().contains("/usr/share/mecabra.OzvarineBackup/ja/a"));
    core.backup(BackupAction::restore);
    EXPECT_EQ(tree(), before);
    core.choices().setTestMode(false);
    EXPECT_EQ(goneAfter(core, OZAction::removeLanguages),
              (Tree{"/usr/share/mecabra/ja/a", "/usr/share/mecabra/file", "/usr/share/tokenizer/zh/a"}));
    EXPECT_EQ(core.fileCount(), 2U);
}

TEST_F(OZCoreLanguageRemoval, SparesTheProgramsOwnFilesWhereItIsExcluded) {
    const std::string bundle = "/Applications/Ozvarine.app";
    addFiles(
        {bundle + "/Chinese.strings", bundle + "/Chinese (Traditional).strings", bundle + "/Dutch.strings"});
    addApp("com.ozdev90.ozvarine", OZAppType::system, bundle);
    auto& excluding = engineFor({"Chinese"});
    inventory().setExclusionMask(OZExclusionMask::languages, "com.ozdev90.ozvarine");
    EXPECT_THAT(goneAfter(excluding, OZAction::removeLanguages), IsEmpty());
    EXPECT_EQ(goneAfter(engineFor({"Chinese"}), OZAction::removeLanguages),
              (Tree{bundle + "/Chinese.strings", bundle + "/Chinese (Traditional).strings"}));
}

TEST_F(OZCoreLanguageRemoval, TakesKeyboardsAndVoices) {
    const std::string voice = "/System/Library/PrivateFrameworks/VoiceServices.framework/";
    const std::string workout = "/System/Library/PrivateFrameworks/SportsWorkout.framework/voices/";
    const Tree keyboards = {"/System/Library/TextInput/TextInput_de.bundle/a",
                            "/System/Library/TextInput/TextInput_de-CH.bundle/a",
                            "/System/Library/LinguisticData/de/a",
                            "/System/Library/LinguisticData/RequiredAssets_de.bundle/a"};
    const Tree voices = {voice + "TTSResources/de-DE/a",
                         voice + "RecognitionResources/Express/deep/de-DE.model.bin",
                         workout + "male/DEDE/a"};
    const Tree kept = {"/System/Library/TextInput/TextInput_fr.bundle/a",
                       "/System/Library/TextInput/deep/TextInput_de.bundle/a",
                       "/System/Library/LinguisticData/RequiredAssets_fr.bundle/a",
                       voice + "TTSResources/fr-FR/a",
                       voice + "RecognitionResources/Express/de-DE.model.txt",
                       workout + "DEDE/a",
                       workout + "male/dede/a"};
    for (const auto& paths : {keyboards, voices, kept}) {
        addFiles({paths.begin(), paths.end()});
    }
    for (const auto action :
         {OZAction::removeLanguages, OZAction::removeKeyboards, OZAction::removeVoiceControlLanguages}) {
        EXPECT_THAT(goneAfter(engineFor({}), action), IsEmpty());
        EXPECT_FALSE(engineFor({}).isRunning());
    }
    EXPECT_EQ(goneAfter(engineFor({"German"}), OZAction::removeKeyboards), keyboards);
    auto& core = engineFor({"German"});
    EXPECT_EQ(goneAfter(core, OZAction::removeVoiceControlLanguages), voices);
    EXPECT_EQ(core.fileCount(), 3U);
    EXPECT_THAT(core.freedSpaceString(), testing::Ne(std::nullopt));
}
