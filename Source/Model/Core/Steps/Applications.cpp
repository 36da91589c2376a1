#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Removal/KnownApps.h"
#include "Model/Core/Steps/EachApplication.h"
#include "Model/Core/Steps/StepContext.h"

// Caches and tracking leftovers of the applications.

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

void cleanApplications(const StepContext& context) {
    if (!context.knowsApplications()) {
        return;
    }
    const auto apps = context.appList.appList(
        {.typeMask = OZAppTypeMask::user,
         .includingIdentifiers = {std::begin(appleApplications), std::end(appleApplications)},
         .exclusionMask = OZExclusionMask::cleanup});
    for (const auto& app : apps) {
        logNameOfApplication(context.run, *app, "\n");
        quitApplication(context, *app);
        for (const auto& container : containersOf(*app)) {
            context.run.performInDirectory({container, containerActions});
        }
        cleanKnownApp(context.run, context.appList, app->identifier());
    }
}
