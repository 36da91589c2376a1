#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/DeviceNames.h"
#include "Platform/Device/UserDefaults.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>

#include <gmock/gmock.h>

namespace {

using platform::Array;
using platform::Bundle;
using platform::Dictionary;
using testing::ElementsAre;

constexpr std::string_view globalPreferences = "/var/mobile/Library/Preferences/.GlobalPreferences.plist";

// Resources of a test's own.
class TemporaryBundle {
  public:
    void add(const std::string& name, const std::string& content) const {
        std::ofstream(_folder.path(name)) << content;
    }
    void addLanguage(const std::string& name, const std::string& nameInItself) const {
        add(name + ".strings", "\"LANGNAME\" = \"" + nameInItself + "\"; \"OWN\" = \"" + name + "\";");
    }
    [[nodiscard]] const std::string& path() const { return _folder.path(); }

  private:
    tests::TemporaryFolder _folder;
};

// One program start on a device.
class Localization {
  public:
    explicit Localization(TemporaryDevice& device, std::filesystem::path resources = Bundle().directory())
        : _bundle(std::move(resources))
        , _defaults(device.device().fileManager(), device.device().notificationCenter(),
                    device.device().warnings(), "/defaults.plist")
        , manager(device.device(), _defaults, _bundle)
        , _observation(device.device().notificationCenter(), OZLocalizationNotification, &manager,
                       [this](const auto&) { ++notifications; }) {}

    [[nodiscard]] platform::UserDefaults& defaults() { return _defaults; }

  private:
    Bundle _bundle;
    platform::UserDefaults _defaults;

  public:
    OZLocalizationManager manager;
    int notifications = 0;

  private:
    platform::Observation _observation;
};

void setSystemLanguage(TemporaryDevice& device, const std::string& language, const std::string& locale) {
    Dictionary preferences;
    if (!language.empty()) {
        preferences["AppleLanguages"] = Array{language, "fr"};
    }
    if (!locale.empty()) {
        preferences["AppleLocale"] = locale;
    }
    device.addFile(globalPreferences,
                   platform::serializePropertyList(preferences, platform::PropertyListFormat::binary));
}

TEST(Localization, PicksTheLanguageFromTheDevice) {
    TemporaryBundle resources;
    for (const auto* name : {"English", "German", "German (Switzerland)", "Portuguese", "Chinese"}) {
        resources.addLanguage(name, name);
    }
    resources.add("Broken.strings", "\"LANGNAME\" = \"Broken\"");
    resources.add("Nameless.strings", "\"OWN\" = \"Nameless\";");
    struct Case {
        std::string language;
        std::string locale;
        std::string expected;
    };
    const Case cases[] = {
        {"", "", "English"},
        {"de", "de_CH", "German (Switzerland)"},
        {"de", "de-CH", "German (Switzerland)"},
        {"en", "de_CH", "German (Switzerland)"},
        {"de", "en_US", "German"},
        {"xx", "pt_BR", "Portuguese"},
        {"pt-BR", "pt_BR", "Portuguese"},
        {"zh-Hans-CN", "zh_CN@calendar=gregorian", "Chinese"},
        {"xx", "xx_YY", "English"},
        {"xx", "xx", "English"},
        {"xx", "de", "German"},
        {"", "de_AT", "English"},
    };
    for (const auto& [language, locale, expected] : cases) {
        TemporaryDevice device;
        setSystemLanguage(device, language, locale);
        Localization localization(device, resources.path());
        EXPECT_EQ(localization.manager.userLanguage(), std::nullopt);
        localization.manager.loadDefaults();
        EXPECT_EQ(localization.manager.userLanguage(), expected) << language << " " << locale;
        EXPECT_EQ(localization.notifications, 2);
    }
    TemporaryDevice device;
    EXPECT_THAT(Localization(device, resources.path()).manager.languageNames(),
                ElementsAre("Chinese", "English", "German", "German (Switzerland)", "Portuguese"));
}

TEST(Localization, DamagedPreferencesCountAsNone) {
    for (const std::string content : {"bplist00 damaged", "<plist version=\"1.0\"><array/></plist>"}) {
        TemporaryDevice device;
        device.addFile(globalPreferences, content);
        const Localization localization(device);
        EXPECT_EQ(localization.manager.systemLanguage(), "English");
        EXPECT_EQ(localization.manager.systemLocale(), "en_GB");
    }
}

TEST(Localization, AnnouncesWhatTheUserChooses) {
    TemporaryBundle resources;
    for (const auto* name : {"English", "German", "French"}) {
        resources.addLanguage(name, name);
    }
    TemporaryDevice device;
    setSystemLanguage(device, "de", "de_DE");
    Localization localization(device, resources.path());
    auto& manager = localization.manager;
    const auto notificationsOf = [&](const std::function<void()>& change) {
        localization.notifications = 0;
        change();
        return localization.notifications;
    };
    EXPECT_EQ(notificationsOf([&] { manager.setUserLanguage("French"); }), 1);
    EXPECT_EQ(notificationsOf([&] { manager.setUserLanguage("French"); }), 0);
    EXPECT_EQ(notificationsOf([&] { manager.setUserLanguage("Klingon"); }), 2);
    EXPECT_EQ(manager.userLanguage(), "German");
    EXPECT_EQ(notificationsOf([&] { manager.setUserLanguage(std::nullopt); }), 1);
    EXPECT_EQ(notificationsOf([&] { manager.resetUserLanguage(); }), 0);
    EXPECT_EQ(manager.userLanguage(), "German");
}

TEST(Localization, FallsBackToEnglishTextsAndThenToTheKey) {
    TemporaryBundle resources;
    resources.add("English.strings",
                  "\"LANGNAME\" = \"English\"; \"NO\" = \"No\"; \"ONLY\" = \"Only English\";");
    resources.add("Spanish.strings", "\"LANGNAME\" = \"Español\"; \"NO\" = \"NO\";");
    TemporaryDevice device;
    Localization localization(device, resources.path());
    auto& manager = localization.manager;
    EXPECT_EQ(manager.localizedStringForKey("NO"), "No");
    manager.setUserLanguage("Spanish");
    // A text that reads like its key is a text all the same.
    EXPECT_EQ(manager.localizedStringForKey("NO"), "NO");
    EXPECT_EQ(manager.localizedStringForKey("ONLY"), "Only English");
    EXPECT_EQ(manager.localizedStringForKey("NOWHERE"), "NOWHERE");
    EXPECT_EQ(manager.localizedLanguageWithName("Spanish"), "Español");
    EXPECT_EQ(manager.localizedLanguageWithName("French"), std::nullopt);
}

TEST(Localization, KeepsTheChoiceAndSurvivesALanguageThatIsGone) {
    TemporaryBundle resources;
    resources.addLanguage("English", "English");
    resources.addLanguage("French", "Français");
    TemporaryDevice device;
    {
        Localization first(device, resources.path());
        registerObject(first.defaults(), first.manager);
        EXPECT_EQ(first.manager.userLanguage(), "English");
        first.manager.setUserLanguage("French");
        EXPECT_TRUE(first.defaults().synchronize());
    }
    Localization second(device, resources.path());
    second.manager.loadDefaults();
    EXPECT_EQ(second.manager.userLanguage(), "French");

    std::filesystem::remove(resources.path() + "/French.strings");
    Localization third(device, resources.path());
    third.manager.loadDefaults();
    EXPECT_EQ(third.manager.userLanguage(), "English");
}

TEST(Localization, SaysThatTheEnglishFileIsMissing) {
    TemporaryBundle resources;
    resources.addLanguage("German", "Deutsch");
    TemporaryDevice device;
    Localization localization(device, resources.path());
    EXPECT_THROW(localization.manager.loadDefaults(), platform::AssertionFailure);
    EXPECT_NO_THROW(localization.manager.setUserLanguage("German"));
}

TEST(LanguageFiles, AreFoundFromTheDevicesThatNeedThem) {
    struct Case {
        std::string language;
        std::string locale;
        std::string expected;
        std::string nameInItself;
    };
    const Case cases[] = {
        {"", "", "English", "English"},
        {"xx-YY", "xx_YY", "English", "English"},
        {"en-GB", "en_GB", "English", "English"},
        {"de", "de", "German", "Deutsch"},
        {"fr-CA", "fr_CA", "French", "Français"},
        {"es-419", "es_MX", "Spanish", "Español"},
        {"it", "it_IT", "Italian", "Italiano"},
        {"pt-BR", "pt_BR", "Portuguese", "Português"},
        {"nl", "nl_BE", "Dutch", "Nederlands"},
        {"ru-RU", "ru_RU", "Russian", "Русский"},
        {"ja-JP", "ja_JP", "Japanese", "日本語"},
        {"zh-Hans", "zh_CN", "Chinese", "简体中文"},
        {"zh-Hans-CN", "zh_CN", "Chinese", "简体中文"},
        {"zh-Hant", "zh_TW", "Chinese (Traditional)", "繁體中文"},
        {"zh-Hant-TW", "zh-Hant_TW", "Chinese (Traditional, Taiwan)", "繁體中文（台灣）"},
        {"zh-Hant-HK", "zh_HK", "Chinese (Traditional, Hong Kong SAR China)", "繁體中文（香港）"},
    };
    for (const auto& [language, locale, expected, nameInItself] : cases) {
        TemporaryDevice device;
        setSystemLanguage(device, language, locale);
        Localization localization(device);
        localization.manager.loadDefaults();
        EXPECT_EQ(localization.manager.userLanguage(), expected) << language << " " << locale;
        EXPECT_EQ(localization.manager.localizedLanguageWithName(expected), nameInItself);
    }
}

TEST(LanguageFiles, StandBesideTheProgramsDescription) {
    EXPECT_EQ(Bundle().bundleIdentifier(), devicename::programIdentifier);
    EXPECT_THAT(Bundle().infoString("CFBundleShortVersionString"),
                testing::Optional(testing::MatchesRegex("[0-9.]+")));
    EXPECT_EQ(Bundle("/nowhere").bundleIdentifier(), "");
    EXPECT_FALSE(Bundle().contentsOfResource("../ozvarine/Info.plist"));
}

// The words in a text that code replaces, in the order in which it does so.
std::vector<std::string> placeholders(const std::string& text) {
    static const std::regex placeholder("%[0-9]*\\$?[@a-z]+|%|<countdown>");
    return {std::sregex_token_iterator(text.begin(), text.end(), placeholder), {}};
}

TEST(LanguageFiles, HoldTheSameKeysAndPlaceholders) {
    const Bundle bundle;
    const auto table = [&](const std::string& name) {
        const auto parsed = platform::parseStringsFile(bundle.contentsOfResource(name).value());
        EXPECT_TRUE(parsed) << name << " line " << parsed.error().line << ": " << parsed.error().reason;
        return parsed.value_or(platform::StringTable{});
    };
    const auto english = table("English.strings");
    EXPECT_EQ(placeholders(english.at("IOSVERNOTSUPPORTED")), (std::vector<std::string>{"%@", "%@"}));
    EXPECT_EQ(placeholders(english.at("UPDATEFOUNDMSG")), std::vector<std::string>{"%@"});
    EXPECT_EQ(placeholders(english.at("RUNCOUNTDOWNMSG")), std::vector<std::string>{"<countdown>"});
    for (const auto& name : bundle.resourceNames()) {
        if (!name.ends_with(".strings")) {
            continue;
        }
        auto texts = table(name);
        for (const auto& [key, text] : english) {
            EXPECT_FALSE(texts[key].empty()) << name << " lacks " << key;
            EXPECT_EQ(placeholders(texts[key]), placeholders(text)) << name << ", " << key;
        }
        EXPECT_EQ(texts.size(), english.size()) << name << " has keys that nothing asks for";
    }
}

} // namespace
