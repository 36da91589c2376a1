// Which images and artwork files go, device by device and mode by mode.

#include "Model/Core/OZAction.h"
#include "Tests/Model/Core/EngineTest.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr const char* unknownDevice = "iPhone99,1";
constexpr const char* device1x = "iPad1,1";
constexpr const char* device2x = "iPhone5,1";
constexpr const char* device3x = "iPhone8,2";

class Removal : public EngineTest {
  protected:
    Removal() {
        addApp("org.example.user", OZAppType::user, "/b/1/User.app", "/c/1");
        addApp("org.example.system", OZAppType::system, "/Applications/System.app");
        addApp("org.example.excluded", OZAppType::user, "/b/2/Excluded.app", "/c/2");
        addApp("com.apple.example", OZAppType::system, "/Applications/Apple.app");
        addApp("io.pangu.nvwastone", OZAppType::system, "/Applications/Pangu.app");
        temporary.addLink("/b/1/User.app/link@3x.png", "icon.png");
    }

    /// Runs an action and tells which files and links are gone.
    Tree gone(OZAction action, OZCoreMode mode = OZCoreMode::clean) {
        const Tree before = tree();
        removeOnce(action, mode);
        return difference(before, tree());
    }

    OZCore& removeOnce(OZAction action, OZCoreMode mode) {
        auto& core = engine(mode);
        appList().setExclusionMask(OZExclusionMask::images, "org.example.excluded");
        core.remove(action, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
        EXPECT_FALSE(core.isRunning());
        return core;
    }

    /// The paths, given from each bundle, in the two applications that may lose images.
    static Tree inBundles(const Tree& names) {
        Tree paths;
        for (const char* bundle : {"/b/1/User.app/", "/Applications/System.app/"}) {
            for (const auto& name : names) {
                paths.insert(bundle + name);
            }
        }
        return paths;
    }

    void addTwins() {
        for (const char* bundle : {"/b/1/User.app/", "/Applications/System.app/", "/b/2/Excluded.app/",
                                   "/Applications/Apple.app/", "/Applications/Pangu.app/"}) {
            for (const char* name :
                 {"icon.png", "icon@2x.png", "icon@3x.png", "only1.png", "only2@2x.png", "pad~ipad.png",
                  "pad@2x~ipad.png", "phone~iphone.PNG", "phone@2x~iphone.PNG", "phone@3X~iphone.PNG",
                  "text.txt", "text@2x.txt", "sub/deep.jpg", "sub/deep@2x.jpg", "Set@2x/inner.png",
                  "Set@2x/inner@2x.png", "\xff\n.gif", "\xff\n@2x.gif"}) {
                temporary.addFile(std::string(bundle) + name, "12345");
            }
        }
    }
};

const std::set<std::string> all3x = {"icon@3x.png", "phone@3X~iphone.PNG"};
const std::set<std::string> all2x = {"icon@2x.png",         "only2@2x.png",    "pad@2x~ipad.png",
                                     "phone@2x~iphone.PNG", "sub/deep@2x.jpg", "Set@2x/inner@2x.png",
                                     "\xff\n@2x.gif"};
const std::set<std::string> twinsOf2x = {"icon.png", "pad~ipad.png", "phone~iphone.PNG", "sub/deep.jpg",
                                         "\xff\n.gif"};
const std::set<std::string> twinsOf3x = {"icon@2x.png", "phone@2x~iphone.PNG"};

} // namespace

TEST_F(Removal, ScaledImagesGoThatTheDeviceHasNoUseFor) {
    const struct {
        const char* device;
        OZAction action;
        Tree gone;
    } cases[] = {
        {device1x, OZAction::remove3xImages, all3x},     {device1x, OZAction::remove2xImages, all2x},
        {device1x, OZAction::remove1xImages, {}},        {device2x, OZAction::remove3xImages, all3x},
        {device2x, OZAction::remove2xImages, {}},        {device2x, OZAction::remove1xImages, twinsOf2x},
        {device3x, OZAction::remove3xImages, {}},        {device3x, OZAction::remove2xImages, twinsOf3x},
        {device3x, OZAction::remove1xImages, twinsOf2x}, {unknownDevice, OZAction::remove3xImages, {}},
        {unknownDevice, OZAction::remove2xImages, {}},   {unknownDevice, OZAction::remove1xImages, {}},
    };
    for (const auto& [device, action, expected] : cases) {
        facts.hardwareModel = device;
        addTwins();
        EXPECT_EQ(gone(action), inBundles(expected))
            << device << ", action " << static_cast<unsigned>(action);
    }
}

TEST_F(Removal, AnalysisCountsWhatACleanupRemoves) {
    facts.hardwareModel = device2x;
    addTwins();
    const Tree before = tree();
    auto& core = removeOnce(OZAction::remove1xImages, OZCoreMode::analyze);
    EXPECT_EQ(core.fileCount(), 10);
    EXPECT_EQ(core.freedSpace(), 50);
    EXPECT_EQ(tree(), before);
    EXPECT_THAT(log(), StartsWith("###################\n# PROCESSED FILES #\n###################\n\nDate: "));
    EXPECT_THAT(log(), HasSubstr("\nNumber of files: 10\nApproximate size: 50"));
    EXPECT_EQ(removeOnce(OZAction::remove1xImages, OZCoreMode::clean).fileCount(), 10);
    EXPECT_THAT(log(), StartsWith("#################\n# DELETED FILES #\n#################\n\nDate: "));
}

TEST_F(Removal, TestModeRenamesOnce) {
    facts.hardwareModel = device2x;
    addTwins();
    Tree expected = tree();
    for (const auto& path : inBundles(all3x)) {
        expected.erase(path);
        expected.insert(path + ".OzvarineBackup");
    }
    EXPECT_EQ(removeOnce(OZAction::remove3xImages, OZCoreMode::test).fileCount(), 4);
    EXPECT_EQ(tree(), expected);
    EXPECT_EQ(removeOnce(OZAction::remove3xImages, OZCoreMode::test).fileCount(), 0);
    EXPECT_EQ(tree(), expected);
}

TEST_F(Removal, BundleNamedLikeAnImageLosesNoTwinAndNeitherDoesItsNeighbour) {
    facts.hardwareModel = device2x;
    addApp("org.example.suffixed", OZAppType::system, "/Applications/System@2x.app");
    addFiles({"/Applications/System.app/icon.png", "/Applications/System@2x.app/icon.png",
              "/Applications/System@2x.app/icon@2x.png"});
    EXPECT_THAT(gone(OZAction::remove1xImages), IsEmpty());
}

TEST_F(Removal, IPadAndFourInchImagesGoByName) {
    const Tree iPad = {"a~ipad.png",     "a-iPad@2x.jpeg",        "a_ipad.nib",
                       "Icon-72.png",    "icon-76@2x.PNG",        "Default-Portrait@2x~ipad.png",
                       "sub/x~ipad.tif", "Default-Landscape.png", "Default-Portrait@2x.png"};
    const Tree fourInch = {"Default-568h@2x.png", "Default-568H@2x~iphone.png",
                           "LaunchImage-700-568h@2x-x.gif"};
    const Tree kept = {"ipad.png",   "a~ipad@3x.png",    "icon-7.png",
                       "a~ipad.txt", "Default-568h.png", "568h@2x"};
    const Tree added = united({inBundles(iPad), inBundles(fourInch), inBundles(kept)});
    addFiles({added.begin(), added.end()});
    addFiles({"/b/2/Excluded.app/a~ipad.png", "/Applications/Apple.app/Default-568h@2x.png"});
    for (const auto action : {OZAction::removeiPadImages, OZAction::remove4InchImages}) {
        facts.hardwareModel.clear();
        EXPECT_THAT(gone(action), IsEmpty()) << "nobody knows what the device shows";
    }
    facts.hardwareModel = unknownDevice;
    EXPECT_EQ(gone(OZAction::removeiPadImages), inBundles(iPad));
    EXPECT_EQ(gone(OZAction::remove4InchImages), inBundles(fourInch));
}

TEST_F(Removal, ArtworkGoesInBundlesAndBesideThem) {
    addApp("org.example.slash", OZAppType::user, "/b/3/Slash.app/", "/c/3");
    const Tree artwork = {"/b/1/iTunesArtwork", "/b/1/User.app/sub/iTunesArtwork",
                          "/Applications/System.app/iTunesArtwork", "/b/3/iTunesArtwork"};
    addFiles({artwork.begin(), artwork.end()});
    addFiles({"/b/2/iTunesArtwork", "/b/1/iTunesArtwork@2x", "/b/1/User.app/iTunesArtwork@2x",
              "/Applications/iTunesArtwork/kept", "/b/iTunesArtwork"});
    EXPECT_EQ(gone(OZAction::removeiTunesArtwork), artwork);
}

TEST_F(Removal, RunWithoutApplicationsEndsWithNothing) {
    addTwins();
    facts.applications->clear();
    facts.hardwareModel = device1x;
    for (const auto action :
         {OZAction::remove3xImages, OZAction::removeiPadImages, OZAction::removeiTunesArtwork}) {
        EXPECT_EQ(removeOnce(action, OZCoreMode::clean).fileCount(), 0);
    }
}

TEST_F(Removal, ActionThatIsNoRemovalLeavesTheRunOpen) {
    auto& core = engine();
    core.remove(OZAction::clean, Analyze::yes);
    EXPECT_TRUE(core.isRunning());
    EXPECT_FALSE(core.freedSpaceString());
}
