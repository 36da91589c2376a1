// What scenarios can do with stored choices, languages and plug-ins.

#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Tests/Scenarios/Runner/World.h"

#include <filesystem>

#include <fmt/format.h>

namespace scenarios {

namespace {

/// "stored KEY": the choice that is in force, saved or not.
void stored(World& world, const Words& words) {
    const auto value = world.builder().device().standardUserDefaults().objectForKey(words.at(0));
    world.say(value ? textOf(*value) : "none");
}

/// "store KEY VALUE", as another object does.
void store(World& world, const Words& words) {
    world.device().standardUserDefaults().setObject(words.at(0), valueOf(words.at(1)));
}

void save(World& world, const Words& /*words*/) {
    std::ignore = world.device().standardUserDefaults().synchronize();
}

/// "languages CHOICE…": chooses each language, "-" for none, and says what it came to and how often that was
/// announced.
void languages(World& world, const Words& words) {
    auto& manager = world.builder().localizationManager();
    size_t announced = 0;
    const platform::Observation observation(world.device().notificationCenter(), OZLocalizationNotification,
                                            &manager, [&](const auto&) { ++announced; });
    for (const auto& word : words) {
        announced = 0;
        manager.setUserLanguage(word == "-" ? std::nullopt : std::optional<std::string_view>(word));
        world.say(fmt::format("{} x{}", *manager.userLanguage(), announced));
    }
}

const Verbs verbs{{"stored", stored}, {"store", store}, {"save", save}, {"languages", languages}};

} // namespace

} // namespace scenarios
