// What scenarios can do with stored choices, languages and plug-ins.

#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Scenarios/Runner/World.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

namespace scenarios {

namespace {

namespace fs = std::filesystem;

/// "stored KEY": the choice that is in force, saved or not.
void stored(World& world, const Words& words) {
    const auto value = world.device().standardUserDefaults().objectForKey(words.at(0));
    world.say(value ? textOf(*value) : "none");
}

/// "store KEY VALUE", as an object beside those that are asked does.
void store(World& world, const Words& words) {
    world.device().standardUserDefaults().setObject(words.at(0), valueOf(words.at(1)));
}

void synchronize(World& world, const Words& /*words*/) {
    std::ignore = world.device().standardUserDefaults().synchronize();
}

/// The languages of the host folder "Resources" of the device folder where that is there, else the program's.
struct Localization {
    explicit Localization(World& world)
        : bundle(fs::exists(world.folder.folder() / "Resources") ? world.folder.folder() / "Resources"
                                                                 : platform::Bundle().directory())
        , manager(world.device(), world.device().standardUserDefaults(), bundle)
        , observation(world.device().notificationCenter(), OZLocalizationNotification, &manager,
                      [this](const auto&) { ++announced; }) {}

    platform::Bundle bundle;
    OZLocalizationManager manager;
    size_t announced = 0;
    platform::Observation observation;
};

/// "speaks [LANGUAGE LOCALE]": the language that the program picks on a device with these preferences, "-"
/// for none, or with those that it has.
void speaks(World& world, const Words& words) {
    if (!words.empty()) {
        platform::Dictionary preferences;
        if (words[0] != "-") {
            preferences["AppleLanguages"] = platform::Array{words[0], "fr"};
        }
        if (words.at(1) != "-") {
            preferences["AppleLocale"] = words[1];
        }
        world.folder.addFile(
            OZLocalizationManager::globalPreferencesPath,
            platform::serializePropertyList(preferences, platform::PropertyListFormat::binary));
        world.takeEffects();
    }
    Localization localization(world);
    auto& manager = localization.manager;
    if (manager.userLanguage()) {
        world.say("too early");
    }
    manager.loadDefaults();
    const std::string& language = *manager.userLanguage();
    world.say(language + ", " + manager.localizedLanguageWithName(language).value_or("nameless"));
    if (localization.announced != 2) {
        world.say(fmt::format("announced {} times", localization.announced));
    }
}

/// What the device's preferences tell, and the languages that there are.
void system(World& world, const Words& /*words*/) {
    Localization localization(world);
    const auto& manager = localization.manager;
    world.say(manager.systemLanguage() + " " + manager.systemLocale() +
              (manager.isSystemLanguageKnown() ? "" : ", unknown"));
    std::string names;
    for (const auto& name : manager.languageNames()) {
        names += (names.empty() ? "" : ", ") + name;
    }
    world.say(names);
}

/// "texts LANGUAGE KEY…".
void texts(World& world, const Words& words) {
    Localization localization(world);
    localization.manager.setUserLanguage(words.at(0));
    std::string texts;
    for (auto key = words.begin() + 1; key != words.end(); ++key) {
        texts += (texts.empty() ? "" : ", ") + localization.manager.localizedStringForKey(*key);
    }
    world.say(texts);
}

/// "languages CHOICE…": chooses each language, "-" for none and "reset" for the device's, and says what it
/// came to and how often that was announced. The program keeps the last one.
void languages(World& world, const Words& words) {
    auto& manager = world.builder().localizationManager();
    size_t announced = 0;
    const platform::Observation observation(world.device().notificationCenter(), OZLocalizationNotification,
                                            &manager, [&](const auto&) { ++announced; });
    std::string said;
    for (const auto& word : words) {
        announced = 0;
        if (word == "reset") {
            manager.resetUserLanguage();
        } else {
            manager.setUserLanguage(word == "-" ? std::nullopt : std::optional<std::string_view>(word));
        }
        said += fmt::format("{} x{}, ", *manager.userLanguage(), announced);
    }
    world.say(said + "now " + *manager.userLanguage());
}

/// "plugins [ID on|off|TITLE]": a line for each plug-in, once one of them has been switched or renamed.
void plugins(World& world, const Words& words) {
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
        world.say(plugin->title() + " (" + identifier.substr(prefix.size()) + ") of " + plugin->dependency() +
                  (plugin->available() ? ", available" : "") + (plugin->enabled() ? ", enabled" : "") +
                  (loader.shouldPluginBeLoaded(identifier) ? ", to be loaded" : "") +
                  (std::ranges::find(atRespring, identifier) != atRespring.end() ? " at a respring" : ""));
    }
}

/// The libraries that are asked for where only those that are there, and not "broken", can be loaded.
void libraries(World& world, const Words& /*words*/) {
    std::string names;
    world.builder().pluginLoader().loadThirdPartyDylibs([&](std::string_view path) {
        names += (names.empty() ? "" : " ") + fs::path(path).stem().string();
        return fs::exists(world.folder.hostPath(path)) && world.folder.contents(path) != "broken";
    });
    world.say(names.empty() ? "none" : names);
}

const Verbs verbs{{"stored", stored},       {"store", store},     {"synchronize", synchronize},
                  {"speaks", speaks},       {"system", system},   {"texts", texts},
                  {"languages", languages}, {"plugins", plugins}, {"libraries", libraries}};

} // namespace

} // namespace scenarios
