#include "Model/Builder/OZModelBuilder.h"
#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Tasks/OZTask.h"
#include "Platform/Device/Device.h"
#include "Tests/Model/Items/ItemTitles.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using tests::deleteRow;
using tests::titlesOf;

namespace {

/// A device as the project's own tool makes it, with a real package database.
class DeletableItemsOfDemoDevice : public testing::Test {
  protected:
    void SetUp() override {
        const auto made = tests::runProgram(
            "ozdevice", {"create", folder.path("device"), "--files", "0", "--ios", "11.1.2"});
        ASSERT_EQ(made.status, 0) << made.errors;
        auto opened = platform::Device::open(folder.path("device"));
        ASSERT_TRUE(opened) << opened.error();
        device = std::move(*opened);
        device->mainQueue().setManualClock(true);
        builder = std::make_unique<OZModelBuilder>(*device);
    }

    tests::TemporaryFolder folder{tests::memoryFolder()};
    std::unique_ptr<platform::Device> device;
    std::unique_ptr<OZModelBuilder> builder;
};

TEST_F(DeletableItemsOfDemoDevice, AreDictionariesOfAllItsFolders) {
    auto& list = builder->dictionaryList();
    EXPECT_THAT(titlesOf(list), ElementsAre("Alder English", "Basin French", "Cinder German",
                                            "Drift Thesaurus", "ember Slang"));
    auto before = folder.listing();
    deleteRow(list, "Alder English");
    const auto after = folder.listing();
    std::erase_if(before, [](const std::string& entry) { return entry.contains("/3d1f.asset"); });
    EXPECT_EQ(after.size(), before.size()) << "an asset went, and nothing else";
    EXPECT_EQ(&builder->dictionaryList(), &list);
}

TEST_F(DeletableItemsOfDemoDevice, ArePreferenceFilesUnderTheirOwnersNames) {
    auto& list = builder->preferenceFileList();
    EXPECT_THAT(titlesOf(list), ElementsAre("Activator (settings)", "BatteryLife", "Cydia", "Cydia", "daemon",
                                            "dock_settings", "Flipswitch", "gone", "Status Dots", "stray",
                                            "Terminal", "WinterBoard"));
    const auto items = list.allItems();
    EXPECT_EQ(items[2]->iconURL(), "OZAppId://com.saurik.Cydia/");
    EXPECT_THAT(items[8]->iconURL().value_or(""), HasSubstr("OZIcon://"));
    EXPECT_EQ(items[9]->iconURL(), std::nullopt);

    for (const char* title : {"gone", "stray", "Terminal"}) {
        deleteRow(list, title);
        device->mainQueue().advance(1);
        device->mainQueue().runPending();
    }
    device->mainQueue().advance(1);
    EXPECT_TRUE(device->mainQueue().runUntil(
        [&] { return list.prefDaemonReloadTask() && list.prefDaemonReloadTask()->terminated(); }, 30));
    EXPECT_EQ(folder.content("device/Journal.log").find("launchctl kickstart"),
              folder.content("device/Journal.log").rfind("launchctl kickstart"));
    EXPECT_THAT(folder.content("device/Journal.log"),
                HasSubstr("launchctl kickstart -k system/com.apple.cfprefsd.xpc.daemon"));
    EXPECT_FALSE(folder.exists("device/Root/private/var/mobile/Library/Preferences/stray.plist"));
}

} // namespace
