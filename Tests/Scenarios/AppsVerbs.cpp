// What scenarios can do with applications and facts about the device.

#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Tests/Scenarios/Verbs.h"

namespace scenarios::apps {

constexpr std::pair<std::string_view, unsigned> bits[] = {
    {"system", 1}, {"user", 2}, {"noapple", 1}, {"icon", 2}, {"cleanup", 1}, {"images", 2}, {"languages", 4}};

/// The bits that a text such as "user+system" names.
template <class Mask>
Mask maskOf(std::string_view text) {
    unsigned mask = 0;
    for (const auto& [name, bit] : bits) {
        mask |= text.contains(name) ? bit : 0;
    }
    return static_cast<Mask>(mask);
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
VERB("installed") {
    const OZAppList& list = world.builder().appList();
    for (const auto type : {OZAppTypeMask::user, OZAppTypeMask::system}) {
        for (const auto& app : list.appList({.typeMask = type})) {
            world.print(described(app.get()));
        }
    }
}

/// The names of a query: "> apps type=user+system filter=icon+noapple with=ID without=ID but=cleanup".
VERB("apps") {
    OZAppQuery query;
    for (const auto& word : words) {
        const auto [kind, value] = namedValue(word);
        kind == "type"     ? void(query.typeMask = maskOf<OZAppTypeMask>(value))
        : kind == "filter" ? void(query.filterMask = maskOf<OZAppFilterMask>(value))
        : kind == "but"    ? void(query.exclusionMask = maskOf<OZExclusionMask>(value))
        : kind == "with"   ? query.includingIdentifiers.push_back(value)
                           : query.excludingIdentifiers.push_back(value);
    }
    Words names;
    for (const auto& app : world.builder().appList().appList(query)) {
        names.push_back(app->displayName());
    }
    world.say(joined(names, "none", ", "));
}

/// The applications that info dictionaries make.
VERB("record") {
    const auto type = words.at(0) == "user" ? OZAppType::user : OZAppType::system;
    for (const auto& info : rest(words)) {
        world.print(described(OZApp::make(type, *valueOf(info).as<platform::Dictionary>()).get()));
    }
}

/// "> exclude set|toggle MASK ID", "> exclude nobody"; then, as without words, who is excluded, in two ways,
/// and what is stored of that.
VERB("exclude") {
    OZAppList& list = world.builder().appList();
    if (words.size() == 3) {
        const auto mask = maskOf<OZExclusionMask>(words[1]);
        words[0] == "set" ? list.setExclusionMask(mask, words[2]) : list.toggleExclusionMask(mask, words[2]);
    } else if (!words.empty()) {
        list.removeAllExcludedApps();
    }
    Words texts = list.excludedAppsIdentifiers();
    for (const auto& app : list.appList({.typeMask = OZAppTypeMask::all})) {
        texts.push_back(list.isAppExcluded(app->identifier()) ? app->displayName() : "");
    }
    std::erase(texts, "");
    list.writeDefaults();
    const auto stored = world.device().standardUserDefaults().objectForKey("excludedApps");
    texts.push_back(stored ? textOf(*stored) : "nothing");
    world.say(joined(texts, "none"));
}

VERB("excluded-paths") {
    const auto& list = world.builder().appList();
    world.say(joined(
        list.pathsForExcludedApps(maskOf<OZExclusionMask>(words.at(0)), maskOf<OZAppTypeMask>(words.at(1))),
        "none"));
}

/// The directories of user, system, groups, system groups and plug-ins: bundles before data.
VERB("app-folders") {
    const OZAppList& list = world.builder().appList();
    Words folders;
    for (const auto& folder : {list.userAppBundleContainerDir(), list.userAppDataContainerDir(),
                               list.systemAppBundleContainerDir(), list.systemAppDataContainerDir(),
                               list.userGroupDataContainerDir(), list.systemGroupDataContainerDir(),
                               list.pluginDataContainerDir()}) {
        folders.push_back(folder.value_or("none"));
    }
    world.say(joined(folders));
}

/// How many of the models tell what; without words, of all conceivable ones.
VERB("models") {
    Words models = words;
    for (int place = words.empty() ? 0 : 1200; place < 1200; ++place) {
        constexpr const char* families[] = {"iPad", "iPhone", "iPod"};
        models.push_back(fmt::format("{}{},{}", families[place / 400], place / 20 % 20, place % 20));
    }
    std::map<std::string, int> counts;
    for (const auto& word : models) {
        const OZDeviceInformation device(word);
        std::string text = device.isKnownDevice() ? "known" : "unknown";
        const std::pair<const char*, OZTriState> answers[] = {{"iPad", device.isiPad()},
                                                              {"4inch", device.is4inchDevice()},
                                                              {"1x", device.isNonRetinaDevice()},
                                                              {"2x", device.isRetina2xDevice()},
                                                              {"3x", device.isRetina3xDevice()}};
        for (const auto& [label, answer] : answers) {
            text += answer == OZTriState::no
                        ? ""
                        : fmt::format(" {}{}", label, answer == OZTriState::yes ? "" : "?");
        }
        ++counts[text];
    }
    for (const auto& [text, count] : counts) {
        world.say(fmt::format("{} {}", count, text));
    }
}

/// Where the fonts are, and how large; with a word, after a move.
VERB("fonts") {
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

} // namespace scenarios::apps
