#pragma once

#include "Model/Plugins/DeviceLibrary.h"
#include "Model/Plugins/OZPlugin.h"
#include "Model/Services/OZUserDefaultsSync.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// All plug-ins with the user's choices, and the loading of their libraries. The table is made once; a
/// library that is installed later is seen at the next start. To be used on the main thread.
class OZPluginLoader : public OZUserDefaultsSync {
  public:
    using PluginsByIdentifier = std::map<std::string, OZPlugin, std::less<>>;

    static constexpr std::string_view activatorIdentifier = "com.ozdev90.ozvarine.activator";
    static constexpr std::string_view flipswitchIdentifier = "com.ozdev90.ozvarine.flipswitch";
    /// WinterBoard, or Anemone where that is installed and the other is not.
    static constexpr std::string_view themingIdentifier = "com.ozdev90.ozvarine.theming";

    /// The device outlives the loader.
    explicit OZPluginLoader(platform::Device& device);

    void loadDefaults() override;
    void writeDefaults() override;

    [[nodiscard]] const PluginsByIdentifier& plugins() const { return _plugins; }
    /// By title, without regard to case. Never null.
    [[nodiscard]] std::vector<OZPlugin*> allPlugins();
    /// Null for an unknown plug-in.
    [[nodiscard]] OZPlugin* pluginWithIdentifier(std::string_view identifier);
    /// Whether it is known, available and enabled.
    [[nodiscard]] bool shouldPluginBeLoaded(std::string_view identifier) const;
    /// Those to be loaded that come into force with a restart of the home screen, by identifier.
    [[nodiscard]] std::vector<std::string> pluginIdentifiersToLoadIntoSpringBoard() const;

    /// Loads the libraries into this process, once, before the interface starts; a library that is missing is
    /// passed over. On the newest generations none is loaded.
    void loadThirdPartyDylibs(const LibraryLoader& load) const;

  private:
    platform::Device& _device;
    PluginsByIdentifier _plugins;
};
