// What is known of a device, and which word counts where several speak.

#include "Platform/Device/DeviceFacts.h"

#include "Platform/Files/FileManager.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

std::string listOf(const std::string& keys, const std::string& value) {
    return "<plist version=\"1.0\"><dict>" + keys + "<string>" + value + "</string></dict></plist>";
}

const std::string versionFile = "System/Library/CoreServices/SystemVersion.plist: ";
const std::string gestalt =
    "private/var/containers/Shared/SystemGroup/systemgroup.com.apple.mobilegestaltcache/"
    "Library/Caches/com.apple.MobileGestalt.plist: ";
const std::string olderGestalt = "private/var/mobile/Library/Caches/com.apple.MobileGestalt.plist: ";
const std::string network = "private/var/preferences/SystemConfiguration/preferences.plist: ";

std::string gestaltList(const std::string& model) {
    return "<plist "
           "version=\"1.0\"><dict><key>CacheExtra</key><dict><key>h9jDsbgj7xIVeIQ8S3/X3Q</key><string>" +
           model + "</string></dict></dict></plist>";
}

std::string networkList(const std::string& model) {
    return listOf("<key>Model</key>", model);
}

TEST(DeviceFacts, TakeNumbersFromTheTextFormat) {
    TemporaryDevice device;
    FileManager tree = device.device().fileManager();
    const auto list = parsePropertyList("{ FoundationVersion = 1280.25; SystemVersion = 9.3.5; "
                                        "Volumes = { \"/\" = { Size = 4000000000; Free = 100; }; }; }");
    ASSERT_TRUE(list);
    const auto facts = DeviceFacts::read(*list->as<Dictionary>(), tree);
    EXPECT_EQ(facts.foundationVersion, 1280.25);
    EXPECT_EQ(facts.systemVersion, "9.3.5");
    EXPECT_EQ(facts.volumes.at("/").size, 4000000000U);
    EXPECT_EQ(facts.volumes.at("/").free, 100U);
}

TEST(SystemVersion, IsTheNewestGenerationThatIsNotNewer) {
    const auto foundation = [](std::string_view version) {
        const auto found = systemVersionForProductVersion(version);
        return found ? found->foundationVersion : 0;
    };
    EXPECT_EQ(foundation("9.3.5"), 1280.25);
    EXPECT_EQ(foundation("10"), 1348.0);
    EXPECT_EQ(foundation("10.1.1"), 1348.0);
    EXPECT_EQ(foundation("4.2.1"), 751.49);
    EXPECT_EQ(foundation("11.4"), 1452.23);
    EXPECT_EQ(foundation("3.1"), 0);
    for (const char* text : {"", "9.", "9.x", "-9", "nine"}) {
        EXPECT_EQ(foundation(text), 0) << text;
    }
}

} // namespace

TEST(DeviceFacts, ModelIsTheFoldersWordThenThePersonsThenThatOfTheTree) {
    const Dictionary folder = {{"HardwareModel", "iPod7,1"}};
    const struct {
        std::string files;
        Dictionary dictionary;
        std::string given;
        std::string model;
    } cases[] = {
        {"", {}, "", ""},
        {gestalt + gestaltList("iPad5,4"), {}, "", "iPad5,4"},
        {gestalt + gestaltList("iPad5,4"), {}, "iPhone9,3", "iPhone9,3"},
        {gestalt + gestaltList("iPad5,4"), folder, "iPhone9,3", "iPod7,1"},
        {olderGestalt + gestaltList("iPhone7,2"), {}, "", "iPhone7,2"},
        {network + networkList("iPad11,12"), {}, "", "iPad11,12"},
        // An internal name says nothing of the kind of device, and what is damaged says nothing at all.
        {network + networkList("J81AP"), {}, "", ""},
        {gestalt + "cut off\n" + network + networkList("iPad4,1"), {}, "", "iPad4,1"},
        {gestalt + gestaltList("iPad5,") + "\n" + network + networkList("iPad4,1"), {}, "", "iPad4,1"},
        {gestalt + gestaltList("iPad5,4x") + "\n" + network + networkList("ipad4,1"), {}, "", ""},
        {gestalt + networkList("iPad5,4"), {}, "", ""},
    };
    for (const auto& row : cases) {
        const tests::TemporaryFolder tree;
        tree.make(row.files);
        auto files = FileManager::atRoot(tree.path()).value();
        EXPECT_EQ(DeviceFacts::read(row.dictionary, files, {.hardwareModel = row.given}).hardwareModel,
                  row.model)
            << row.files;
    }
}

TEST(DeviceFacts, VersionIsTheFoldersWordThenTheTreesThenThePersons) {
    const tests::TemporaryFolder tree;
    auto files = FileManager::atRoot(tree.path()).value();
    EXPECT_EQ(DeviceFacts::read({}, files, {.systemVersion = "9.3.5"}).foundationVersion, 1280.25);
    tree.make(versionFile + listOf("<key>ProductVersion</key>", "10.2"));
    EXPECT_EQ(DeviceFacts::read({}, files, {.systemVersion = "9.3.5"}).systemVersion, "10.2");
    EXPECT_EQ(DeviceFacts::read({{"SystemVersion", "8.4"}}, files, {.systemVersion = "9.3.5"}).systemVersion,
              "8.4");
}
