// What scenarios can do with stored choices, languages and plug-ins.

#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Scenarios/Verbs.h"

namespace scenarios::services {

namespace fs = std::filesystem;

/// "stored KEY": the choice that is in force, saved or not.
VERB("stored") {
    const auto value = world.device().standardUserDefaults().objectForKey(words.at(0));
    world.say(value ? textOf(*value) : "none");
}

/// "store KEY VALUE", as an object beside those that are asked does.
VERB("store") {
    world.device().standardUserDefaults().setObject(words.at(0), valueOf(words.at(1)));
}

VERB("synchronize") {
    std::ignore = world.device().standardUserDefaults().synchronize();
}

/// The languages of the host folder "Resources" of the device folder where that is there, else the program's.
struct Languages {
    explicit Languages(World& world)
        : bundle(fs::exists(world.folder.folder() / "Resources") ? world.folder.folder() / "Resources"
                                                                 : platform::Bundle().directory())
        , manager(world.device(), world.device().standardUserDefaults(), bundle) {}

    platform::Bundle bundle;
    OZLocalizationManager manager;
};

/// "speaks LANGUAGE/LOCALE…": the languages that the program picks on devices with these preferences, "-" for
/// none, and their names in themselves.
VERB("speaks") {
    Words said;
    for (const auto& word : words) {
        platform::Dictionary preferences;
        if (const std::string language = word.substr(0, word.find('/')); language != "-") {
            preferences["AppleLanguages"] = platform::Array{language, "fr"};
        }
        if (const std::string locale = word.substr(word.find('/') + 1); locale != "-") {
            preferences["AppleLocale"] = locale;
        }
        world.folder.addFile(
            OZLocalizationManager::globalPreferencesPath,
            platform::serializePropertyList(preferences, platform::PropertyListFormat::binary));
        world.takeEffects();
        Languages languages(world);
        const bool isEarly = languages.manager.userLanguage().has_value();
        languages.manager.loadDefaults();
        const std::string& language = *languages.manager.userLanguage();
        said.push_back((isEarly ? "early " : "") + language + " " +
                       languages.manager.localizedLanguageWithName(language).value_or("nameless"));
    }
    world.say(joined(said, "", ", "));
}

/// What the device's preferences tell, and the languages that there are.
VERB("system") {
    const Languages languages(world);
    world.say(fmt::format("{} {}{} of {}", languages.manager.systemLanguage(),
                          languages.manager.systemLocale(),
                          languages.manager.isSystemLanguageKnown() ? "" : ", unknown,",
                          fmt::join(languages.manager.languageNames(), ", ")));
}

/// "texts LANGUAGE KEY…".
VERB("texts") {
    Languages languages(world);
    languages.manager.setUserLanguage(words.at(0));
    Words texts;
    for (const auto& key : rest(words)) {
        texts.push_back(languages.manager.localizedStringForKey(key));
    }
    world.say(joined(texts, "", ", "));
}

/// "languages CHOICE…": chooses each language, "-" for none and "reset" for the device's, and says what it
/// came to and how often that was announced. The program keeps the last one.
VERB("languages") {
    auto& manager = world.builder().localizationManager();
    size_t announced = 0;
    const platform::Observation observation(world.device().notificationCenter(), OZLocalizationNotification,
                                            &manager, [&](const auto&) { ++announced; });
    std::string said;
    for (const auto& word : words) {
        announced = 0;
        word == "reset" ? manager.resetUserLanguage()
                        : manager.setUserLanguage(word == "-" ? std::nullopt : std::optional(word));
        said += fmt::format("{} x{}, ", *manager.userLanguage(), announced);
    }
    world.say(said + "now " + *manager.userLanguage());
}

/// "plugins [ID on|off|TITLE]": a line for each plug-in, once one of them has been switched or renamed.
VERB("plugins") {
    auto& loader = world.builder().pluginLoader();
    const std::string prefix = "com.ozdev90.ozvarine.";
    if (!words.empty()) {
        OZPlugin* plugin = loader.pluginWithIdentifier(prefix + words[0]);
        const std::string& value = words.at(1);
        value == "on" || value == "off" ? plugin->setEnabled(value == "on") : plugin->setTitle(value);
    }
    const auto atRespring = loader.pluginIdentifiersToLoadIntoSpringBoard();
    for (const OZPlugin* plugin : loader.allPlugins()) {
        const std::string& identifier = plugin->identifier();
        const bool isAtRespring = std::ranges::find(atRespring, identifier) != atRespring.end();
        world.say(plugin->title() + " (" + identifier.substr(prefix.size()) + ") of " + plugin->dependency() +
                  (plugin->available() ? ", available" : "") + (plugin->enabled() ? ", enabled" : "") +
                  (loader.shouldPluginBeLoaded(identifier) ? ", to be loaded" : "") +
                  (isAtRespring ? " at a respring" : ""));
    }
}

/// The libraries that are asked for where only those that are there, and not "broken", can be loaded.
VERB("libraries") {
    Words names = {"asked for"};
    world.builder().pluginLoader().loadThirdPartyDylibs([&](std::string_view path) {
        names.push_back(fs::path(path).stem());
        return fs::exists(world.folder.hostPath(path)) && world.folder.contents(path) != "broken";
    });
    world.say(joined(names));
}

} // namespace scenarios::services
