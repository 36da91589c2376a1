#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"

#include "Categories/ByteText.h"
#include "Model/Items/Deletable/Dictionaries/OZDMDictionaryList.h"
#include "Tests/Model/Items/ItemTitles.h"
#include "Tests/Support/TemporaryDevice.h"

#include <gmock/gmock.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::deleteRow;
using tests::titlesOf;

namespace {

const std::string assets = "/var/mobile/Library/Assets/com_apple_MobileAsset_DictionaryServices_dictionary";
constexpr double generationWithAssetService = 1140.11;

class DictionaryList : public testing::Test {
  protected:
    void addDictionary(const std::string& path) { device.addFile(path + "/Contents/Info.plist", "info"); }
    [[nodiscard]] bool exists(std::string_view path) const {
        return fs::exists(fs::symlink_status(device.hostPath(path)));
    }

    TemporaryDevice device{platform::DeviceFacts{.foundationVersion = generationWithAssetService}};
};

TEST_F(DictionaryList, FindsDictionariesInAllFoldersAndSortsThemTogether) {
    addDictionary(assets + "2/a.asset/AssetData/zulu.dictionary");
    addDictionary(assets + "/deep/er/Émile.dictionary");
    addDictionary("/Library/Dictionaries/Zürich.dictionary");
    addDictionary("/Library/Dictionaries/below/Hidden.dictionary");
    addDictionary("/Library/Dictionaries/Alpha.dict");
    addDictionary("/var/mobile/Library/Assets/com_apple_MobileAsset_Font/Font.dictionary");
    device.addFile("/Library/Dictionaries/Unfinished.dictionary/Contents/Body.data");
    addDictionary("/var/mobile/Library/Dictionaries/ALPHA.dictionary");
    addDictionary("/Library/Dictionaries/alpha.dictionary");
    addDictionary("/var/mobile/Library/Dictionaries/émigré.dictionary");

    OZDictionaryList list(device.device());
    EXPECT_THAT(titlesOf(list), ElementsAre("alpha", "ALPHA", "zulu", "Zürich", "émigré", "Émile"));
    EXPECT_EQ(list.numberOfItems(), 6U);
    EXPECT_EQ(list.itemAtIndex(5)->paths().front(), assets + "/deep/er/Émile.dictionary");
    EXPECT_THROW(std::ignore = list.itemAtIndex(6), platform::Exception);
}

TEST_F(DictionaryList, RemovesAnAssetWithItsDictionaryAndOtherwiseTheDictionaryAlone) {
    addDictionary(assets + "2/a.asset/AssetData/Asset.dictionary");
    device.addFile(assets + "2/a.asset/Info.plist");
    addDictionary(assets + "2/b.asset/AssetData/Neighbour.dictionary");
    addDictionary(assets + "/c.asset/Near.dictionary");
    addDictionary(assets + "/c.asset/x/y/Far.dictionary");
    addDictionary("/Library/d.asset/AssetData/Outside.dictionary");
    addDictionary("/Library/Dictionaries/Plain.dictionary");
    device.addFile("/Library/Dictionaries/readme");

    OZDictionaryList list(device.device());
    for (const char* title : {"Asset", "Near", "Far", "Plain"}) {
        deleteRow(list, title);
    }
    EXPECT_THAT(titlesOf(list), ElementsAre("Neighbour"));
    EXPECT_FALSE(exists(assets + "2/a.asset"));
    EXPECT_FALSE(exists(assets + "/c.asset/Near.dictionary"));
    EXPECT_FALSE(exists(assets + "/c.asset/x/y/Far.dictionary"));
    EXPECT_FALSE(exists("/Library/Dictionaries/Plain.dictionary"));
    EXPECT_TRUE(exists(assets + "2/b.asset/AssetData/Neighbour.dictionary/Contents/Info.plist"));
    EXPECT_TRUE(exists(assets + "/c.asset/x/y"));
    EXPECT_TRUE(exists("/Library/d.asset/AssetData/Outside.dictionary"));
    EXPECT_TRUE(exists("/Library/Dictionaries/readme"));
    list.reloadItems();
    EXPECT_THAT(titlesOf(list), ElementsAre("Neighbour"));
}

TEST_F(DictionaryList, NeverRemovesWhatALinkLeadsTo) {
    addDictionary("/elsewhere/x.asset/AssetData/Kept.dictionary");
    device.addLink(assets + "2", "/elsewhere");
    device.addLink("/Library/Dictionaries/Link.dictionary", "/elsewhere/x.asset/AssetData/Kept.dictionary");
    addDictionary(assets + "/y.asset/AssetData/Swapped.dictionary");

    OZDictionaryList list(device.device());
    EXPECT_THAT(titlesOf(list), ElementsAre("Link", "Swapped"));
    // While the list is shown, somebody puts a link in the place of a folder.
    fs::remove_all(device.hostPath(assets));
    device.addLink(assets, "/elsewhere");
    addDictionary("/elsewhere/y.asset/AssetData/Swapped.dictionary");
    deleteRow(list, "Swapped");
    deleteRow(list, "Link");
    EXPECT_THAT(titlesOf(list), IsEmpty());
    EXPECT_TRUE(exists("/elsewhere/x.asset/AssetData/Kept.dictionary/Contents/Info.plist"));
    EXPECT_TRUE(exists("/elsewhere/y.asset/AssetData/Swapped.dictionary/Contents/Info.plist"));
    EXPECT_FALSE(exists("/Library/Dictionaries/Link.dictionary"));
}

TEST_F(DictionaryList, KeepsTheSizeThatItHasShown) {
    const std::string path = "/Library/Dictionaries/Sized.dictionary";
    const std::string link = "/Library/Dictionaries/Link";
    device.addFile(path + "/Contents/Info.plist", std::string(24, 'x'));
    device.addFile(path + "/Body", std::string(1000, 'x'));
    device.addLink(link, path);
    const auto below = device.device().fileManager().attributesOfItemAtPath(path + "/Contents");

    OZDeletableItem files(device.device(), {path + "/Body", path + "/Contents/Info.plist", "/nowhere"}, "id");
    EXPECT_EQ(files.humanReadableSize(), humanReadableStringFromBytes(1024));
    OZDeletableItem folder(device.device(), path);
    EXPECT_EQ(folder.humanReadableSize(), humanReadableStringFromBytes(1024 + below->size));
    EXPECT_EQ(OZDeletableItem(device.device(), link).humanReadableSize(),
              humanReadableStringFromBytes(path.size()));
    device.addFile(path + "/Body", "small");
    EXPECT_EQ(files.humanReadableSize(), humanReadableStringFromBytes(1024));

    fs::resize_file(device.hostPath(path + "/Body"), uint64_t{2} << 40U);
    EXPECT_EQ(OZDeletableItem(device.device(), path + "/Body").humanReadableSize(),
              humanReadableStringFromBytes(uint64_t{2} << 40U, {.unit = 4}));

    EXPECT_THROW(OZDeletableItem(device.device(), {}, "id"), platform::AssertionFailure);
    EXPECT_THROW(OZDeletableItem(device.device(), {"/path"}, ""), platform::AssertionFailure);
}

// An asset that is purged as the platform's service does it.
class Asset : public DictionaryAsset {
  public:
    Asset(TemporaryDevice& device, std::string path, platform::Dictionary attributes, bool present = true)
        : _device(device)
        , _path(std::move(path))
        , _attributes(std::move(attributes))
        , _present(present) {}

    bool isPresentOnDisk() const override { return _present; }
    std::string localPath() const override { return _path; }
    platform::Dictionary attributes() const override { return _attributes; }
    void purge() override {
        fs::remove_all(_device.hostPath(_path));
        _present = false;
    }

  private:
    TemporaryDevice& _device;
    std::string _path;
    platform::Dictionary _attributes;
    bool _present;
};

class AssetService : public DictionaryAssetService {
  public:
    std::vector<std::shared_ptr<DictionaryAsset>> availableDefinitionDictionaries() override {
        return assets;
    }

    std::vector<std::shared_ptr<DictionaryAsset>> assets;
};

TEST_F(DictionaryList, LeavesDictionariesToTheAssetServiceWhereThereIsOne) {
    addDictionary("/assets/a/Known.dictionary");
    addDictionary("/assets/b/Away.dictionary");
    addDictionary("/assets/c/Unnamed.dictionary");
    device.addFile("/assets/d/Broken.dictionary/Body");
    addDictionary("/assets/e/another.dictionary");
    addDictionary("/Library/Dictionaries/Scanned.dictionary");
    const auto named = [](const char* name) { return platform::Dictionary{{"DictionaryPackageName", name}}; };
    AssetService service;
    const struct {
        const char* path;
        platform::Dictionary attributes;
        bool present = true;
    } cases[] = {
        {"/assets/a", named("Known.dictionary")},
        {"/assets/b", named("Away.dictionary"), false},
        {"/assets/c", {}},
        {"/assets/d", named("Broken.dictionary")},
        {"", named("Known.dictionary")},
        {"/assets/e", named("another.dictionary")},
    };
    for (const auto& [path, attributes, present] : cases) {
        service.assets.push_back(std::make_shared<Asset>(device, path, attributes, present));
    }

    OZDictionaryList list(device.device(), &service);
    EXPECT_THAT(titlesOf(list), ElementsAre("another", "Known"));
    list.deleteItemAtIndex(1);
    EXPECT_THAT(titlesOf(list), ElementsAre("another"));
    EXPECT_FALSE(exists("/assets/a")) << "the service removes the asset, not the dictionary alone";
    EXPECT_TRUE(exists("/assets/e/another.dictionary"));
    list.reloadItems();
    EXPECT_THAT(titlesOf(list), ElementsAre("another"));

    TemporaryDevice older(platform::DeviceFacts{.foundationVersion = 1047.25});
    EXPECT_FALSE(OZDMDictionaryList::isSupported(older.device(), &service));
    OZDictionaryList scanning(device.device());
    EXPECT_THAT(titlesOf(scanning), ElementsAre("Scanned"));
}

} // namespace
