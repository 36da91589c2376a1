// What callers of items and plug-ins may rely on and no scenario of a device shows.

#include "Model/Apps/OZAppList.h"
#include "Model/Items/Deletable/Dictionaries/OZDMDictionaryList.h"
#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Items/Togglable/Daemons/OZDaemon.h"
#include "Model/Items/Togglable/Daemons/OZDaemonTable.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"
#include "Model/Items/Togglable/OZTogglableFile.h"
#include "Model/Plugins/OZPlugin.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/Usual.h"

namespace {

using platform::AssertionFailure;
using platform::Dictionary;

TEST(Items, OfTheDaemonTableAreNamedOnce) {
    // The unused places of the table add the empty name.
    std::multiset<std::string_view> names;
    for (const auto& group : daemonGroupTable) {
        names.insert(group.identifier);
        for (const auto& daemon : group.daemons) {
            names.insert(daemon.identifier);
        }
    }
    EXPECT_EQ(std::size(daemonGroupTable), 25);
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size() - names.count("") + 1);
}

TEST(Items, RefuseWhatMakesNoSenseAndKeepTheSizeThatTheyHaveShown) {
    TemporaryDevice temporary;
    auto& device = temporary.device();
    temporary.addFile("/one", std::string(24, 'x'));
    temporary.addFile("/two", std::string(1000, 'x'));
    EXPECT_THROW(OZTogglableFile::make(device, "", "/one", "/off"), AssertionFailure);
    EXPECT_EQ(OZTogglableFile::make(device, "id", "one"), nullptr) << "it has no folders";
    EXPECT_EQ(OZPreferenceBundleGroup::make("none", {}), nullptr);
    EXPECT_THROW(OZDaemon::make(device, ""), AssertionFailure);
    EXPECT_EQ(OZDaemon::make(device, "com.apple.missing"), nullptr);
    for (const auto& [label, title] :
         {std::pair("com.apple.a", "a"), {"com.apple.", "com.apple."}, {"org.a", "org.a"}}) {
        temporary.addFile("/System/Library/LaunchDaemons/" + std::string(label) + ".plist");
        EXPECT_EQ(OZDaemon::make(device, label)->title(), title);
    }
    EXPECT_THROW(OZDeletableItem(device, {}, "id"), AssertionFailure);
    EXPECT_THROW(OZDeletableItem(device, {"/one"}, ""), AssertionFailure);
    OZDeletableItem files(device, {"/one", "/two", "/nowhere"}, "id");
    EXPECT_EQ(files.humanReadableSize(), "1.00 KiB");
    temporary.addFile("/two", "small");
    EXPECT_EQ(files.humanReadableSize(), "1.00 KiB");
    EXPECT_THROW(std::ignore = OZDictionaryList(device).itemAtIndex(0), platform::Exception);
    const OZAppList apps(device);
    EXPECT_THROW(OZPreferenceFileList(device, nullptr, [](auto) { return std::nullopt; }), AssertionFailure);
    EXPECT_THROW(OZPreferenceFileList(device, &apps, {}), AssertionFailure);
    EXPECT_THROW(OZPlugin(device, "id", "", "/one", true), AssertionFailure);
    temporary.addFile("/Library/MobileSubstrate/DynamicLibraries/PreferenceLoader.disabled");
    EXPECT_THROW(OZCSAddonList(device).items(), platform::Exception);
}

/// An asset that is purged as the platform's service does it.
struct Asset : DictionaryAsset {
    Asset(std::string at, Dictionary told, bool isThere = true)
        : path(std::move(at))
        , names(std::move(told))
        , isPresent(isThere) {}
    [[nodiscard]] bool isPresentOnDisk() const override { return isPresent; }
    [[nodiscard]] std::string localPath() const override { return path; }
    [[nodiscard]] Dictionary attributes() const override { return names; }
    void purge() override { isPresent = false; }

    std::string path;
    Dictionary names;
    bool isPresent;
};

struct AssetService : DictionaryAssetService {
    std::vector<std::shared_ptr<DictionaryAsset>> availableDefinitionDictionaries() override {
        return {assets.begin(), assets.end()};
    }

    std::vector<std::shared_ptr<Asset>> assets;
};

TEST(Items, ThatAreDictionariesAreLeftToTheAssetServiceWhereThereIsOne) {
    TemporaryDevice device(platform::DeviceFacts{.foundationVersion = 1140.11});
    for (const char* path : {"/a/Known.dictionary", "/b/Away.dictionary", "/c/Unnamed.dictionary",
                             "/e/another.dictionary", "/Library/Dictionaries/Scanned.dictionary"}) {
        device.addFile(std::string(path) + "/Contents/Info.plist");
    }
    AssetService service;
    const auto add = [&](const char* path, const char* name, bool isThere = true) {
        service.assets.push_back(
            std::make_shared<Asset>(path, Dictionary{{"DictionaryPackageName", name}}, isThere));
    };
    add("/a", "Known.dictionary");
    add("/b", "Away.dictionary", false);
    add("/d", "Broken.dictionary");
    add("", "Known.dictionary");
    add("/e", "another.dictionary");
    service.assets.push_back(std::make_shared<Asset>("/c", Dictionary()));
    OZDictionaryList list(device.device(), &service);
    ASSERT_EQ(list.numberOfItems(), 2);
    EXPECT_EQ(list.itemAtIndex(0)->title() + list.itemAtIndex(1)->title(), "anotherKnown");
    list.deleteItemAtIndex(1);
    EXPECT_FALSE(service.assets[0]->isPresent);
    EXPECT_TRUE(service.assets[4]->isPresent);
    EXPECT_EQ(list.numberOfItems(), 1);
    list.reloadItems();
    EXPECT_EQ(list.numberOfItems(), 1);
    TemporaryDevice older(platform::DeviceFacts{.foundationVersion = 1047.25});
    EXPECT_FALSE(OZDMDictionaryList::isSupported(older.device(), &service));
}

} // namespace
