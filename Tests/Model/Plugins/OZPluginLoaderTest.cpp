#include "Model/Plugins/OZPluginLoader.h"

#include "Tests/Support/TemporaryDevice.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

class Plugins {
  public:
    explicit Plugins(double version = 1140.11)
        : temporary(platform::DeviceFacts{.foundationVersion = version}) {}

    void install(const Names& names) {
        for (const auto& name : names) {
            temporary.addFile("/Library/MobileSubstrate/DynamicLibraries/" + name + ".dylib");
        }
    }
    void store(platform::Dictionary choices) {
        temporary.device().standardUserDefaults().setObject("plugins", std::move(choices));
    }
    [[nodiscard]] std::optional<platform::Dictionary> stored() {
        return temporary.device().standardUserDefaults().dictionaryForKey("plugins");
    }
    [[nodiscard]] OZPluginLoader load() {
        OZPluginLoader loader(temporary.device());
        loader.loadDefaults();
        return loader;
    }
    /// The names of the libraries that are asked for, where those that are installed can be loaded.
    [[nodiscard]] Names loadedLibraries() {
        Names names;
        load().loadThirdPartyDylibs([&](std::string_view path) {
            const std::string name(path.substr(path.rfind('/') + 1));
            names.push_back(name.substr(0, name.rfind('.')));
            return std::filesystem::exists(temporary.hostPath(path));
        });
        return names;
    }

    TemporaryDevice temporary;
};

const std::string activator(OZPluginLoader::activatorIdentifier);
const std::string flipswitch(OZPluginLoader::flipswitchIdentifier);
const std::string theming(OZPluginLoader::themingIdentifier);

TEST(PluginLoader, HasOneThemingEngine) {
    const struct {
        Names installed;
        const char* title;
        const char* dependency;
        bool available;
    } rows[] = {
        {{}, "WinterBoard", "winterboard", false},
        {{"WinterBoard"}, "WinterBoard", "winterboard", true},
        {{"AnemoneCore"}, "Anemone", "com.anemonetheming.anemone", true},
        {{"AnemoneCore", "WinterBoard"}, "WinterBoard", "winterboard", true},
    };
    for (const auto& row : rows) {
        Plugins plugins;
        plugins.install(row.installed);
        OZPluginLoader loader(plugins.temporary.device());
        const OZPlugin& plugin = *loader.pluginWithIdentifier(theming);
        EXPECT_EQ(plugin.title(), row.title);
        EXPECT_EQ(plugin.dependency(), row.dependency);
        EXPECT_EQ(plugin.available(), row.available);
        EXPECT_EQ(loader.plugins().size(), 3);
    }
}

TEST(PluginLoader, KeepsTheUsersChoices) {
    Plugins plugins;
    plugins.install({"Activator", "Flipswitch"});
    {
        auto loader = plugins.load();
        EXPECT_FALSE(loader.shouldPluginBeLoaded(activator));
        EXPECT_TRUE(loader.pluginWithIdentifier(theming)->enabled());
        EXPECT_FALSE(loader.shouldPluginBeLoaded(theming)) << "it is not there";
        EXPECT_FALSE(loader.shouldPluginBeLoaded("unknown"));
        EXPECT_THAT(loader.pluginIdentifiersToLoadIntoSpringBoard(), IsEmpty());
        EXPECT_EQ(plugins.stored(), std::nullopt);
    }
    plugins.store({{activator, "YES"}, {theming, false}, {flipswitch, platform::Array{}}, {"gone", true}});
    auto loader = plugins.load();
    EXPECT_EQ(plugins.stored(),
              (platform::Dictionary{{activator, "YES"}, {theming, false}, {flipswitch, platform::Array{}}}));
    EXPECT_TRUE(loader.shouldPluginBeLoaded(activator));
    EXPECT_FALSE(loader.pluginWithIdentifier(theming)->enabled());
    EXPECT_FALSE(loader.pluginWithIdentifier(flipswitch)->enabled());
    EXPECT_THAT(loader.pluginIdentifiersToLoadIntoSpringBoard(), ElementsAre(activator));
    loader.pluginWithIdentifier(flipswitch)->setEnabled(true);
    plugins.store({{"newer", 1}});
    loader.writeDefaults();
    EXPECT_EQ(plugins.stored(),
              (platform::Dictionary{{activator, true}, {flipswitch, true}, {theming, false}, {"newer", 1}}));

    plugins.store({{"gone", true}});
    std::ignore = plugins.load();
    EXPECT_EQ(plugins.stored(), std::nullopt);
}

TEST(PluginLoader, LoadsTheLibrariesOfTheGeneration) {
    const struct {
        double version;
        Names installed;
        Names loaded;
        bool themingEnabled = true;
    } rows[] = {
        {1444.12, {"Activator", "WinterBoard"}, {}},
        {1444.11, {}, {"Activator"}},
        {1240.0, {"WinterBoard"}, {"Activator"}, false},
        {1240.0, {"WinterBoard"}, {"Activator", "WinterBoard", "IconBundles"}},
        {1240.1, {"Activator", "WinterBoard"}, {"Activator", "WinterBoard"}},
        {1240.1, {"AnemoneCore"}, {"Activator", "AnemoneCore", "AnemoneIcons", "AnemoneUIKit"}},
    };
    for (const auto& row : rows) {
        Plugins plugins(row.version);
        plugins.install(row.installed);
        plugins.store({{theming, row.themingEnabled}});
        EXPECT_EQ(plugins.loadedLibraries(), row.loaded) << row.version;
    }
    Names asked;
    Plugins plugins;
    plugins.install({"AnemoneCore"});
    plugins.load().loadThirdPartyDylibs([&](std::string_view path) {
        asked.emplace_back(path);
        return false;
    });
    EXPECT_EQ(asked.size(), 2) << "the parts need the core";
}

TEST(PluginLoader, SortsByTitleWithoutCase) {
    Plugins plugins;
    auto loader = plugins.load();
    loader.pluginWithIdentifier(theming)->setTitle("and");
    Names titles;
    for (const OZPlugin* plugin : loader.allPlugins()) {
        titles.push_back(plugin->title());
    }
    EXPECT_THAT(titles, ElementsAre("Activator", "and", "Flipswitch"));
}

TEST(Plugin, NeedsItsTextsAndAFileThatIsNoFolder) {
    TemporaryDevice device;
    std::filesystem::create_directories(device.hostPath("/folder"));
    device.addFile("/file");
    EXPECT_FALSE(OZPlugin(device.device(), "id", "package", "/folder", true).available());
    EXPECT_TRUE(OZPlugin(device.device(), "id", "package", "/file", true).available());
    EXPECT_THROW(OZPlugin(device.device(), "id", "", "/file", true), platform::AssertionFailure);
}

} // namespace
