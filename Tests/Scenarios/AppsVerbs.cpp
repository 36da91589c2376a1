// What scenarios can do with applications and facts about the device.

#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Tests/Scenarios/Runner/World.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace scenarios {

namespace {

/// The bits that a text such as "user+system" names.
template <class Mask>
Mask maskOf(std::string_view text) {
    unsigned mask = 0;
    for (const auto& [name, bit] : {std::pair("system", 1U),
                                    {"user", 2U},
                                    {"noapple", 1U},
                                    {"icon", 2U},
                                    {"cleanup", 1U},
                                    {"images", 2U},
                                    {"languages", 4U}}) {
        mask |= text.contains(name) ? bit : 0;
    }
    return static_cast<Mask>(mask);
}

void sayAll(World& world, const Words& texts, const char* separator = " ") {
    world.say(texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, separator)));
}

std::string described(const OZApp* app) {
    if (app == nullptr) {
        return "none";
    }
    std::string text = fmt::format("{} {}, {}: {}", app->type() == OZAppType::user ? "user" : "system",
                                   app->identifier(), app->displayName(), app->bundlePath());
    text += app->bundleContainer() ? " in " + *app->bundleContainer() : "";
    text += app->dataContainer() ? " data " + *app->dataContainer() : "";
    for (const auto* containers : {&app->groupDataContainers(), &app->pluginDataContainers()}) {
        for (const auto& [identifier, path] : *containers) {
            text.append(" ").append(identifier).append("=").append(path);
        }
    }
    return text;
}

/// What is installed, in full.
void installed(World& world, const Words& /*words*/) {
    const OZAppList& list = world.builder().appList();
    for (const auto type : {OZAppTypeMask::user, OZAppTypeMask::system}) {
        for (const auto& app : list.appList({.typeMask = type})) {
            world.print(described(app.get()));
        }
    }
}

/// The names of a query: "> apps type=user+system filter=icon+noapple with=ID without=ID but=cleanup".
void apps(World& world, const Words& words) {
    OZAppQuery query;
    for (const auto& word : words) {
        const std::string value = word.substr(word.find('=') + 1);
        word.starts_with("type")     ? void(query.typeMask = maskOf<OZAppTypeMask>(value))
        : word.starts_with("filter") ? void(query.filterMask = maskOf<OZAppFilterMask>(value))
        : word.starts_with("but")    ? void(query.exclusionMask = maskOf<OZExclusionMask>(value))
        : word.starts_with("with=")  ? query.includingIdentifiers.push_back(value)
                                     : query.excludingIdentifiers.push_back(value);
    }
    Words names;
    for (const auto& app : world.builder().appList().appList(query)) {
        names.push_back(app->displayName());
    }
    sayAll(world, names, ", ");
}

/// The application that an info dictionary makes.
void record(World& world, const Words& words) {
    const auto type = words.at(0) == "user" ? OZAppType::user : OZAppType::system;
    world.print(described(OZApp::make(type, *valueOf(words.at(1)).as<platform::Dictionary>()).get()));
}

/// "> exclude set|toggle MASK ID", "> exclude nobody"; then, as without words, who is excluded, and from
/// what.
void exclude(World& world, const Words& words) {
    OZAppList& list = world.builder().appList();
    if (words.size() == 3) {
        const auto mask = maskOf<OZExclusionMask>(words[1]);
        words[0] == "set" ? list.setExclusionMask(mask, words[2]) : list.toggleExclusionMask(mask, words[2]);
    } else if (!words.empty()) {
        list.removeAllExcludedApps();
    }
    Words texts = list.excludedAppsIdentifiers();
    for (const auto& app : list.appList({.typeMask = OZAppTypeMask::all})) {
        const std::string& identifier = app->identifier();
        if (list.isAppExcluded(identifier)) {
            const auto mask = static_cast<unsigned>(list.exclusionMaskForApp(identifier));
            const bool fromLanguages = list.isAppExcluded(identifier, OZExclusionMask::languages);
            texts.push_back(fmt::format("{}={}{}", identifier, mask, fromLanguages ? "=languages" : ""));
        }
    }
    sayAll(world, texts);
}

/// What would be stored of the exclusions.
void storedExclusions(World& world, const Words& /*words*/) {
    world.builder().appList().writeDefaults();
    const auto stored = world.device().standardUserDefaults().objectForKey("excludedApps");
    world.say(stored ? textOf(*stored) : "nothing");
}

void excludedPaths(World& world, const Words& words) {
    const auto& list = world.builder().appList();
    sayAll(world, list.pathsForExcludedApps(maskOf<OZExclusionMask>(words.at(0)),
                                            maskOf<OZAppTypeMask>(words.at(1))));
}

/// The directories of user, system, groups, system groups and plug-ins: bundles before data.
void appFolders(World& world, const Words& /*words*/) {
    using Folder = std::optional<std::string> (OZAppList::*)() const;
    for (const Folder folder :
         {&OZAppList::userAppBundleContainerDir, &OZAppList::userAppDataContainerDir,
          &OZAppList::systemAppBundleContainerDir, &OZAppList::systemAppDataContainerDir,
          &OZAppList::userGroupDataContainerDir, &OZAppList::systemGroupDataContainerDir,
          &OZAppList::pluginDataContainerDir}) {
        world.say((world.builder().appList().*folder)().value_or("none"));
    }
}

/// What models tell; without words, how many of all conceivable ones tell what.
void model(World& world, const Words& words) {
    const auto told = [](const std::string& name) {
        const OZDeviceInformation device(name);
        std::string text = device.isKnownDevice() ? "known" : "unknown";
        for (const auto& [label, answer] : {std::pair("iPad", device.isiPad()),
                                            {"4inch", device.is4inchDevice()},
                                            {"1x", device.isNonRetinaDevice()},
                                            {"2x", device.isRetina2xDevice()},
                                            {"3x", device.isRetina3xDevice()}}) {
            constexpr const char* marks[] = {"", " {}", " {}?"};
            text += fmt::format(fmt::runtime(marks[static_cast<unsigned>(answer)]), label);
        }
        return text;
    };
    for (const auto& word : words) {
        world.say(told(word));
    }
    std::map<std::string, int> counts;
    for (int place = words.empty() ? 0 : 1200; place < 1200; ++place) {
        constexpr const char* families[] = {"iPad", "iPhone", "iPod"};
        ++counts[told(fmt::format("{}{},{}", families[place / 400], place / 20 % 20, place % 20))];
    }
    for (const auto& [text, count] : counts) {
        world.say(fmt::format("{} {}", count, text));
    }
}

/// Where the fonts are, and how large; with a word, after a move.
void fonts(World& world, const Words& words) {
    OZFontsFolderMover mover(world.device());
    std::optional<OZFontsFolderError> error;
    const bool moved = !words.empty() && mover.moveFolder(&error);
    if (error) {
        world.say(fmt::format("{} {}: {}", error->code.category().name(), error->code.value(),
                              error->localizedDescription()));
    }
    world.say(fmt::format(
        "{}{} {}: {} bytes, {}", moved ? "moved, " : "", static_cast<unsigned>(mover.folderLocation()),
        mover.currentFolderPath().value_or("nowhere"), mover.folderSize(), mover.humanReadableFolderSize()));
}

const Verbs verbs{{"apps", apps},
                  {"installed", installed},
                  {"record", record},
                  {"exclude", exclude},
                  {"stored-exclusions", storedExclusions},
                  {"excluded-paths", excludedPaths},
                  {"app-folders", appFolders},
                  {"model", model},
                  {"fonts", fonts}};

} // namespace

} // namespace scenarios
