// What callers of items and plug-ins may rely on and no scenario of a device shows.

#include "Model/Apps/OZAppList.h"
#include "Model/Items/Deletable/Dictionaries/OZDMDictionaryList.h"
#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Items/Togglable/Daemons/OZDaemonTable.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"
#include "Model/Items/Togglable/OZTogglableFile.h"
#include "Model/Plugins/OZPlugin.h"
#include "Tests/Support/TemporaryDevice.h"

#include <set>

#include <gmock/gmock.h>

namespace fs = std::filesystem;

namespace {

using platform::AssertionFailure;

TEST(DaemonTable, NamesEveryDaemonOnce) {
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

TEST(Items, RefuseWhatMakesNoSense) {
    TemporaryDevice temporary;
    auto& device = temporary.device();
    temporary.addFile("/on");
    EXPECT_THROW(OZTogglableFile::make(device, "", "/on", "/off"), AssertionFailure);
    EXPECT_EQ(OZTogglableFile::make(device, "id", "on"), nullptr) << "it has no folders";
    EXPECT_EQ(OZPreferenceBundleGroup::make("none", {}), nullptr);
    EXPECT_THROW(OZDeletableItem(device, {}, "id"), AssertionFailure);
    EXPECT_THROW(OZDeletableItem(device, {"/on"}, ""), AssertionFailure);
    EXPECT_THROW(std::ignore = OZDictionaryList(device).itemAtIndex(0), platform::Exception);
    const OZAppList apps(device);
    EXPECT_THROW(OZPreferenceFileList(device, nullptr, [](auto) { return std::nullopt; }), AssertionFailure);
    EXPECT_THROW(OZPreferenceFileList(device, &apps, {}), AssertionFailure);
    EXPECT_THROW(OZPlugin(device, "id", "", "/on", true), AssertionFailure);
    temporary.addFile("/Library/MobileSubstrate/DynamicLibraries/PreferenceLoader.disabled");
    EXPECT_THROW(OZCSAddonList(device).items(), platform::Exception);
}

TEST(Items, OfSeveralPathsKeepTheSizeThatTheyHaveShown) {
    TemporaryDevice temporary;
    temporary.addFile("/one", std::string(24, 'x'));
    temporary.addFile("/two", std::string(1000, 'x'));
    OZDeletableItem files(temporary.device(), {"/one", "/two", "/nowhere"}, "id");
    EXPECT_EQ(files.humanReadableSize(), "1.00 KiB");
    temporary.addFile("/two", "small");
    EXPECT_EQ(files.humanReadableSize(), "1.00 KiB");
}

/// An asset that is purged as the platform's service does it.
struct Asset : DictionaryAsset {
    Asset(TemporaryDevice& owner, std::string at, platform::Dictionary told, bool isThere = true)
        : device(owner)
        , path(std::move(at))
        , attributesTold(std::move(told))
        , isPresent(isThere) {}

    [[nodiscard]] bool isPresentOnDisk() const override { return isPresent; }
    [[nodiscard]] std::string localPath() const override { return path; }
    [[nodiscard]] platform::Dictionary attributes() const override { return attributesTold; }
    void purge() override {
        fs::remove_all(device.hostPath(path));
        isPresent = false;
    }

    TemporaryDevice& device;
    std::string path;
    platform::Dictionary attributesTold;
    bool isPresent;
};

struct AssetService : DictionaryAssetService {
    std::vector<std::shared_ptr<DictionaryAsset>> availableDefinitionDictionaries() override {
        return assets;
    }

    std::vector<std::shared_ptr<DictionaryAsset>> assets;
};

TEST(Dictionaries, AreLeftToTheAssetServiceWhereThereIsOne) {
    TemporaryDevice device(platform::DeviceFacts{.foundationVersion = 1140.11});
    for (const char* path : {"/a/Known.dictionary", "/b/Away.dictionary", "/c/Unnamed.dictionary",
                             "/e/another.dictionary", "/Library/Dictionaries/Scanned.dictionary"}) {
        device.addFile(std::string(path) + "/Contents/Info.plist");
    }
    device.addFile("/d/Broken.dictionary/Body");
    const auto named = [](const char* name) { return platform::Dictionary{{"DictionaryPackageName", name}}; };
    AssetService service;
    service.assets = {std::make_shared<Asset>(device, "/a", named("Known.dictionary")),
                      std::make_shared<Asset>(device, "/b", named("Away.dictionary"), false),
                      std::make_shared<Asset>(device, "/c", platform::Dictionary()),
                      std::make_shared<Asset>(device, "/d", named("Broken.dictionary")),
                      std::make_shared<Asset>(device, "", named("Known.dictionary")),
                      std::make_shared<Asset>(device, "/e", named("another.dictionary"))};
    OZDictionaryList list(device.device(), &service);
    const auto titles = [&] {
        std::string text;
        for (const auto& item : list.allItems()) {
            text += item->title() + " ";
        }
        return text;
    };
    EXPECT_EQ(titles(), "another Known ");
    list.deleteItemAtIndex(1);
    EXPECT_FALSE(fs::exists(device.hostPath("/a"))) << "the asset goes, not the dictionary alone";
    EXPECT_TRUE(fs::exists(device.hostPath("/e/another.dictionary")));
    EXPECT_EQ(titles(), "another ");
    list.reloadItems();
    EXPECT_EQ(titles(), "another ");
    TemporaryDevice older(platform::DeviceFacts{.foundationVersion = 1047.25});
    EXPECT_FALSE(OZDMDictionaryList::isSupported(older.device(), &service));
}

} // namespace
