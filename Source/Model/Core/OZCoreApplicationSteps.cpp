#include "Categories/NSStringAdditions.h"
#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupAction.h"
#include "Model/Core/OZCoreRun.h"
#include "Model/Tasks/OZTaskManager.h"

#include <unicode/unistr.h>

// Caches and tracking leftovers of the applications, and old archives of battery usage.

namespace {

using enum CleanupPrimitive;

// The system's own applications that are treated like the user's.
constexpr std::string_view appleApplications[] = {
    "com.apple.calculator", "com.apple.Health",   "com.apple.Maps", "com.apple.mobilemail",
    "com.apple.news",       "com.apple.podcasts", "com.apple.tips", "com.apple.weather"};

constexpr std::string_view trackingPatterns[] = {".flurry", ".initialTimestamp", "googleanalytics"};

constexpr CleanupAction containerActions[] = {
    {.primitive = delFolderContents, .path = "./Library/Application Support/FlurryFiles"},
    {.primitive = delFolderContents, .path = "./Library/FlurryFiles"},
    {.primitive = delFolderContents, .path = "./Library/Caches"},
    {.primitive = delFolderContents, .path = "./tmp"},
    {.primitive = delFolderContents, .path = "./Library/WebKit/Cookies"},
    {.primitive = delFolderContents, .path = "./Library/WebKit/Databases"},
    {.primitive = delFolderContents, .path = "./Library/WebKit/LocalStorage"},
    {.primitive = delFolderContents, .path = "./Library/WebKit/WebsiteData"},
    {.primitive = delWithPatterns,
     .path = "./Documents",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = trackingPatterns}},
    {.primitive = delWithPatterns,
     .path = "./Library",
     .onlyFiles = OnlyFiles::yes,
     .patterns = {.startPatterns = trackingPatterns}},
};

constexpr CleanupAction batteryActions[] = {
    {.primitive = delFolderContents, .path = "/var/mobile/Library/BatteryLife/Archives"},
};

std::vector<std::string> containersOf(const OZApp& app) {
    std::vector<std::string> containers;
    if (app.dataContainer()) {
        containers.push_back(*app.dataContainer());
    }
    for (const auto* group : {&app.groupDataContainers(), &app.pluginDataContainers()}) {
        for (const auto& [identifier, container] : *group) {
            containers.push_back(container);
        }
    }
    return containers;
}

} // namespace

void OZCore::cleanApplications(const Run& run) {
    if (!knowsApplications()) {
        return;
    }
    const auto apps = _appList.appList(
        {.typeMask = OZAppTypeMask::user,
         .includingIdentifiers = {std::begin(appleApplications), std::end(appleApplications)},
         .exclusionMask = OZExclusionMask::cleanup});
    for (const auto& app : apps) {
        logNameOfApplication(*app, "\n");
        quitApplication(*app, run);
        for (const auto& container : containersOf(*app)) {
            performInDirectory({container, containerActions});
        }
        cleanKnownApp(app->identifier());
    }
}

// The name with a line of dashes as long as the name below it; lengths are the platform's, in UTF-16 units.
void OZCore::logNameOfApplication(const OZApp& app, std::string_view ending) {
    const auto length = icu::UnicodeString::fromUTF8(app.displayName()).length();
    const std::string dashes(static_cast<size_t>(length), '-');
    log(std::string("\n").append(app.displayName()).append("\n").append(dashes).append(ending));
}

// Somebody at a terminal may well be using the application.
void OZCore::quitApplication(const OZApp& app, const Run& run) {
    if (!run.outputIsTerminal && _mode != OZCoreMode::analyze) {
        OZTaskManager::killTaskWithName(_device, app.executableFileName());
    }
}

void OZCore::cleanBatteryData(const Run& /*run*/) {
    perform(batteryActions);
    const auto containers = _appList.systemGroupDataContainerDir();
    if (containers && isNotEmptyOrWhitespace(*containers)) {
        quickDel(
            find({*containers, "-mindepth", "5", "-maxdepth", "5", "-regextype", "posix-extended", "-regex",
                  "^.*/Library/BatteryLife/Archives/.*$", "-mtime", "+7", "-type", "f", "-print"}));
    }
}
