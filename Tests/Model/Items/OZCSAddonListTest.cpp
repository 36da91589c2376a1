#include "Model/Items/Togglable/OZCSAddonList.h"

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Tests/Support/TemporaryDevice.h"

#include <gmock/gmock.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string folder = "/Library/MobileSubstrate/DynamicLibraries/";

class Addons : public testing::Test {
  protected:
    void add(std::initializer_list<const char*> names) {
        for (const std::string name : names) {
            device.addFile(folder + name, name);
        }
    }
    /// The items of a new list, disabled ones with a "-" in front.
    [[nodiscard]] std::vector<std::string> found() {
        std::vector<std::string> items;
        for (const auto& [key, item] : OZCSAddonList(device.device()).items()) {
            EXPECT_EQ(item->title(), item->identifier());
            EXPECT_EQ(item->identifier(), key);
            items.push_back((item->currentEnabledState() ? "" : "-") + key);
        }
        return items;
    }
    [[nodiscard]] bool exists(const std::string& name) const {
        return fs::exists(fs::symlink_status(device.hostPath(folder + name)));
    }

    TemporaryDevice device;
};

TEST_F(Addons, AreWhatHasEitherExtension) {
    EXPECT_THAT(found(), IsEmpty());
    add({"Foo.dylib", "Foo.plist", "Off.disabled", "Both.dylib", "Both.disabled", "Dots.1.dylib", ".dylib",
         "dylib", "Upper.DYLIB", "Nothing."});
    fs::create_directories(device.hostPath(folder + "Folder.dylib/Below.dylib"));
    device.addLink(folder + "Link.dylib", "/nowhere");
    EXPECT_THAT(found(), ElementsAre("Both", "Dots.1", "Foo", "Link", "-Off"));
}

TEST_F(Addons, AreFoundBehindALinkToTheirFolder) {
    device.addFile("/usr/lib/Loaded/A.dylib");
    device.addLink("/Library/MobileSubstrate/DynamicLibraries", "/usr/lib/Loaded");
    OZCSAddonList list(device.device());
    ASSERT_NE(list.itemWithIdentifier("A"), nullptr);
    list.setEnabledState(false);
    EXPECT_TRUE(list.applyChanges());
    EXPECT_TRUE(fs::exists(device.hostPath("/usr/lib/Loaded/A.disabled")));
    EXPECT_THAT(found(), ElementsAre("-A"));
}

TEST_F(Addons, PreferenceLoaderIsOneItemWithADisabledNameOfItsOwn) {
    add({"PreferenceLoader.dylib", "PreferenceLoaderDisabled.disabled"});
    EXPECT_THAT(found(), ElementsAre("PreferenceLoader"));
    fs::remove(device.hostPath(folder + "PreferenceLoader.dylib"));
    EXPECT_THAT(found(), ElementsAre("-PreferenceLoader"));

    OZCSAddonList list(device.device());
    list.itemWithIdentifier("PreferenceLoader")->setEnabledState(true);
    EXPECT_TRUE(list.applyChanges());
    EXPECT_TRUE(exists("PreferenceLoader.dylib"));
    list.setEnabledState(false);
    EXPECT_TRUE(list.applyChanges());
    EXPECT_TRUE(exists("PreferenceLoaderDisabled.disabled") && !exists("PreferenceLoader.dylib"));
}

TEST_F(Addons, PreferenceLoaderUnderAnotherNameIsAnError) {
    add({"PreferenceLoader.disabled"});
    EXPECT_THROW(OZCSAddonList(device.device()).items(), platform::Exception);
}

} // namespace
