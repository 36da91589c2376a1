// The facts of a device folder, and the applications among them.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Apps/InstalledApps.h"
#include "Model/Apps/OZApp.h"
#include "Platform/Device/DeviceFacts.h"
#include "Tests/Support/TemporaryDevice.h"

namespace {

void readApplications(const platform::Array& applications) {
    const auto apps = listedApps(applications);
    for (const auto& [type, infos] :
         {std::pair(OZAppType::system, &apps.systemAppInfo), std::pair(OZAppType::user, &apps.userAppInfo)}) {
        for (const auto& [identifier, info] : *infos) {
            const auto app = OZApp::make(type, info);
            require(!app || (app->bundlePath().starts_with('/') && !app->identifier().contains('/')));
            require(!app || type != OZAppType::user || app->dataContainer());
        }
    }
}

} // namespace

void readInput(std::string_view bytes) {
    static TemporaryDevice device;
    auto fileManager = device.device().fileManager();
    const auto list = platform::parsePropertyList(bytes);
    const auto* dictionary = list ? list->as<platform::Dictionary>() : nullptr;
    if (dictionary != nullptr) {
        const auto facts = platform::DeviceFacts::read(*dictionary, fileManager);
        readApplications(facts.applications.value_or(platform::Array()));
    }
    // The same bytes as the tree's own word on its version.
    device.addFile("/System/Library/CoreServices/SystemVersion.plist", bytes);
    std::ignore = platform::DeviceFacts::read({}, fileManager);
}
