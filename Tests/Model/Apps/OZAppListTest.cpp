#include "Model/Apps/OZAppList.h"

#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/Usual.h"

TEST(OZAppListTest, warmingIconsOutlivesTheList) {
    platform::Array apps;
    TemporaryDevice files;
    for (int index = 0; index < 200; ++index) {
        const std::string bundle = fmt::format("/apps/system{}.app", index);
        files.addFile(bundle + "/Main");
        files.addFile(bundle + "/icon.png");
        files.addFile(bundle + "/Info.plist",
                      "<plist><dict><key>CFBundleIconFile</key><string>icon</string></dict></plist>");
        apps.push_back(platform::Dictionary{{"ApplicationType", "System"},
                                            {"Path", bundle},
                                            {"CFBundleExecutable", "Main"},
                                            {"CFBundleIdentifier", fmt::format("system{}", index)}});
    }
    platform::DeviceFacts facts;
    facts.applications = apps;
    auto device =
        std::make_unique<platform::Device>(platform::FileManager::atRoot(files.hostPath("/")).value(), facts,
                                           platform::ToolTable({}, files.folder(), files.folder()));
    auto list = std::make_unique<OZAppList>(*device);
    const auto last = list->appWithIdentifier("system199");
    list->checkSystemAppIconValidityInBackground();
    list.reset();
    auto fileManager = device->fileManager();
    EXPECT_TRUE(last->hasValidIcon(fileManager));
    device.reset();
}
