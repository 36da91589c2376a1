#include "Bundles.h"
#include "KnownApplications.h"
#include "Platform/Device/DeviceNames.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

enum class Extras { none, group, groupAndPlugin };

struct UserApplication {
    BundleRow bundle;
    Extras extras = Extras::none;
};

constexpr UserApplication userApplications[] = {
    {{"org.example.atlas", "Atlas", "Atlas"}, Extras::groupAndPlugin},
    {{"org.example.bakery", "bakery orders", "Bakery"}},
    {{"org.example.chess", "Chess Corner", "ChessCorner"}, Extras::group},
    {{"org.example.diary", "Diary", "Diary"}, Extras::groupAndPlugin},
    {{"org.example.fitness", "Fitness Log", "FitnessLog"}},
    {{"org.example.garden", "Garden", "Garden"}},
    {{"org.example.hiking", "Hiking Maps", "HikingMaps"}, Extras::group},
    {{"org.example.notes", "Notes & More", "NotesMore"}},
    {{"org.example.player", "Player", "Player"}, Extras::groupAndPlugin},
    {{"org.example.recipes", "Recipes", "Recipes"}},
    {{"org.example.trains", "Trains", "Trains"}},
    {{"org.example.umlaut", "Übersicht", "Uebersicht"}},
};

struct SystemApplication {
    BundleRow bundle;
    Icon icon = Icon::present;
    bool hasData = false;
    int since = 0;
    int until = anyMajor;
};

constexpr SystemApplication systemApplications[] = {
    {{"com.apple.AdSheetPhone", "AdSheet", "AdSheet"}, Icon::none},
    {.bundle = {"com.apple.Health", "Health", "Health"}, .hasData = true, .since = 8},
    {.bundle = {"com.apple.Maps", "Maps", "Maps"}, .hasData = true},
    {{"com.apple.MobileSMS", "Messages", "MobileSMS"}},
    {{"com.apple.Preferences", "Settings", "Preferences"}},
    {.bundle = {"com.apple.calculator", "Calculator", "Calculator"}, .hasData = true},
    {.bundle = {"com.apple.mobilemail", "Mail", "MobileMail"}, .hasData = true},
    {{"com.apple.mobilephone", "Phone", "MobilePhone"}},
    {.bundle = {"com.apple.mobilesafari", "Safari", "MobileSafari"}, .hasData = true},
    {.bundle = {"com.apple.news", "News", "News"}, .hasData = true, .since = 9},
    {.bundle = {"com.apple.podcasts", "Podcasts", "Podcasts"}, .hasData = true, .since = 8},
    {.bundle = {"com.apple.tips", "Tips", "Tips"}, .hasData = true, .since = 8},
    {.bundle = {"com.apple.weather", "Weather", "Weather"}, .hasData = true},
    {{"com.apple.webapp", "Web", "Web"}, Icon::none},
    {.bundle = {"io.pangu.nvwastone", "Stone", "NvwaStone"}, .since = 9, .until = 9},
    {.bundle = {"com.qwertyoruiopz.zmach-portal", "Portal", "zmach-portal"}, .since = 10, .until = 10},
    {.bundle = {"com.biteSMS", "biteSMS", "biteSMS"}, .until = 7},
};

// What every application's data container holds; "{id}" is the application's identifier.
constexpr TreeEntry commonData[] = {
    {"/Documents/.flurryDeviceInfo"},
    {"/Documents/.initialTimestamp"},
    {"/Documents/diary.txt"},
    {"/Documents/googleanalytics-v3.sql"},
    {"/Documents/googlemaps.txt"},
    {"/Documents/session.log"},
    {"/Library/.flurryUserInfo"},
    {"/Library/Application Support/FlurryFiles/agent"},
    {"/Library/Application Support/Model.sqlite"},
    {"/Library/Caches/{id}/Cache.db"},
    {"/Library/Caches/{id}/fsCachedData/1A"},
    {"/Library/Caches/Snapshots/{id}/front.png"},
    {"/Library/Cookies/Cookies.binarycookies"},
    {"/Library/FlurryFiles/agent"},
    {"/Library/Preferences/{id}.plist"},
    {"/Library/WebKit/Cookies/Cookies.db"},
    {"/Library/WebKit/Databases/Databases.db"},
    {"/Library/WebKit/Keep/settings.plist"},
    {"/Library/WebKit/LocalStorage/file__0.localstorage"},
    {"/Library/WebKit/WebsiteData/data"},
    {"/Library/googleanalytics-v2.sql"},
    {"/tmp/upload.part"},
};

constexpr TreeEntry safariData[] = {
    {"/Library/Safari/Bookmarks.db"},       {"/Library/Safari/History.db"},
    {"/Library/Safari/History.db-wal"},     {"/Library/Safari/RecentSearches.plist"},
    {"/Library/Safari/SuspendState.plist"}, {"/Library/Safari/Thumbnails/page.png"},
};

constexpr TreeEntry sharedData[] = {
    {"/Documents/shared.txt"},      {"/Library/Caches/{id}/Cache.db"},
    {"/Library/FlurryFiles/agent"}, {"/Library/Preferences/{id}.plist"},
    {"/tmp/exchange.tmp"},
};

class ApplicationTree {
  public:
    explicit ApplicationTree(DeviceBuild& build)
        : _build(build) {}

    /// Gives the data container.
    std::string addUser(const BundleRow& row, Extras extras);
    void addKnown(const KnownApplication& application);
    void addSystem(const SystemApplication& application);
    void addSystemContainer(std::string_view identifier);
    void addInstallationCache();

  private:
    std::string newContainer(std::string_view folder, std::string_view identifier);
    void addGroup(const BundleRow& row);
    void addPlugin(const BundleRow& row, const std::string& bundle);
    void remember(const char* type, const BundleRow& row, const std::string& path,
                  const std::string& container);

    DeviceBuild& _build;
    platform::Dictionary _installed[2];
};

std::string ApplicationTree::newContainer(std::string_view folder, std::string_view identifier) {
    const std::string container = fmt::format("{}/{}", folder, _build.random.uuid());
    _build.tree.folder(container, _build.someAge());
    if (_build.generation.hasContainers()) {
        addContainerMetadata(_build, container, identifier);
    }
    return container;
}

std::string ApplicationTree::addUser(const BundleRow& row, Extras extras) {
    const Generation& generation = _build.generation;
    const std::string bundleContainer = newContainer(generation.userBundles, row.identifier);
    const std::string data =
        generation.hasContainers() ? newContainer(generation.userData, row.identifier) : bundleContainer;
    const std::string bundle = fmt::format("{}/{}.app", bundleContainer, row.executable);
    addBundle(_build, bundle, row);
    constexpr TreeEntry artwork[] = {{"/iTunesArtwork"}, {"/iTunesMetadata.plist"}};
    _build.add(artwork, bundleContainer);
    if (_build.random.below(3) == 0) {
        _build.add(bundle + "/iTunesArtwork", std::string_view("artwork in the bundle"));
    }
    _build.add(commonData, data, row.identifier);
    if (generation.hasContainers() && extras != Extras::none) {
        addGroup(row);
    }
    if (generation.hasContainers() && extras == Extras::groupAndPlugin) {
        addPlugin(row, bundle);
    }
    remember("User", row, bundle, data);
    return data;
}

void ApplicationTree::addKnown(const KnownApplication& application) {
    const BundleRow row{application.identifier, application.name, application.name};
    const std::string data = addUser(row, Extras::none);
    _build.add(application.data, data);
    platform::Dictionary preferences;
    for (const std::string_view key : application.preferenceKeys) {
        preferences.emplace(key, static_cast<int64_t>(_build.random.below(9)));
    }
    if (!preferences.empty()) {
        _build.add(fmt::format("{}/Library/Preferences/{}.plist", data, row.identifier), preferences);
    }
}

void ApplicationTree::addGroup(const BundleRow& row) {
    const std::string group = fmt::format("group.{}", row.identifier);
    _build.add(sharedData, newContainer(_build.generation.groupData, group), group);
}

void ApplicationTree::addPlugin(const BundleRow& row, const std::string& bundle) {
    const std::string identifier = fmt::format("{}.widget", row.identifier);
    const BundleRow plugin{identifier, row.displayName, "Widget"};
    addBundle(_build, bundle + "/PlugIns/Widget.appex", plugin, Icon::none);
    _build.add(sharedData, newContainer(_build.generation.pluginData, identifier), identifier);
}

void ApplicationTree::addSystem(const SystemApplication& application) {
    const BundleRow& row = application.bundle;
    if (_build.generation.major < application.since || _build.generation.major > application.until) {
        return;
    }
    const std::string bundle = fmt::format("/Applications/{}.app", row.executable);
    addBundle(_build, bundle, row, application.icon);
    std::string data;
    if (application.hasData && _build.generation.hasContainers()) {
        data = newContainer(_build.generation.userData, row.identifier);
        _build.add(commonData, data, row.identifier);
        if (row.identifier == "com.apple.mobilesafari") {
            _build.add(safariData, data);
        }
    }
    remember("System", row, bundle, data);
}

void ApplicationTree::addSystemContainer(std::string_view identifier) {
    if (!_build.generation.systemData.empty()) {
        _build.add(sharedData, newContainer(_build.generation.systemData, identifier), identifier);
    }
}

void ApplicationTree::remember(const char* type, const BundleRow& row, const std::string& path,
                               const std::string& container) {
    // The cache is never complete: what was installed behind its back is found by looking.
    if (row.identifier == "org.example.trains" || row.identifier == "com.biteSMS") {
        return;
    }
    platform::Dictionary info = infoDictionary(row, Icon::present);
    info["ApplicationType"] = type;
    info["Path"] = TreeWriter::physicalPath(path);
    if (!container.empty()) {
        info["Container"] = TreeWriter::physicalPath(container);
    }
    _installed[type == std::string_view("User")].insert_or_assign(std::string(row.identifier),
                                                                  std::move(info));
}

void ApplicationTree::addInstallationCache() {
    if (!_build.generation.hasContainers()) {
        _build.add(devicename::installationCache,
                   platform::Dictionary{{"System", _installed[0]}, {"User", _installed[1]}});
    }
}

} // namespace

void addApplications(DeviceBuild& build) {
    ApplicationTree applications(build);
    for (const UserApplication& application : userApplications) {
        applications.addUser(application.bundle, application.extras);
    }
    for (const KnownApplication& application : knownApplications()) {
        applications.addKnown(application);
    }
    for (const SystemApplication& application : systemApplications) {
        applications.addSystem(application);
    }
    applications.addSystemContainer("com.apple.geod");
    applications.addSystemContainer("com.apple.lsd");
    applications.addInstallationCache();
}

} // namespace ozdevice
