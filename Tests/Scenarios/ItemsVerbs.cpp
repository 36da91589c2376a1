// What scenarios can do with togglable and deletable items.

#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
#include "Model/Items/Togglable/Daemons/OZDaemon.h"
#include "Model/Items/Togglable/Daemons/OZDaemonList.h"
#include "Model/Items/Togglable/Daemons/OZOverrideDaemon.h"
#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZCSAddonList.h"
#include "Model/Items/Togglable/OZCSAddonToggler.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Items/Togglable/OZPreferenceBundleGroup.h"
#include "Model/Items/Togglable/OZPreferenceBundleList.h"
#include "Model/Items/Togglable/Restore/OZSystemRestore.h"
#include "Model/Packages/OZPackage.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Model/Tasks/OZTask.h"
#include "Tests/Scenarios/Runner/World.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

namespace scenarios {

namespace {

OZTogglableItemList& togglableList(World& world, const std::string& name) {
    auto& builder = world.builder();
    if (name == "daemons") {
        return builder.daemonList();
    }
    auto& workspace = builder.packageWorkspace();
    return name == "addons" ? static_cast<OZTogglableItemList&>(workspace.CSAddonList())
                            : workspace.prefBundleList();
}

/// Such as "name", "-name" for what is off, "name>off" for what is to change, "name?" for what is for another
/// version, "-group(-a b)".
std::string stateOf(OZTogglableItem& item, const std::string& name) {
    const bool isOn = item.currentEnabledState();
    std::string text = (isOn ? "" : "-") + name;
    if (const auto* page = dynamic_cast<OZPreferenceBundle*>(&item)) {
        text += page->isForCurrentiOSVersion() ? "" : "?";
    }
    if (isOn != item.enabledState()) {
        text += isOn ? ">off" : ">on";
    }
    if (auto* list = dynamic_cast<OZTogglableItemList*>(&item)) {
        std::string members;
        for (const auto& [key, member] : list->items()) {
            members += (members.empty() ? "" : " ") + stateOf(*member, key);
        }
        text += "(" + members + ")";
    }
    return text;
}

/// "items LIST": "addons", "pages" or "daemons".
void items(World& world, const Words& words) {
    world.say(stateOf(togglableList(world, words.at(0)), ""));
}

/// "titles LIST": a line for each item, in the order of titles, with its package, icon and description.
void titles(World& world, const Words& words) {
    for (const auto& item : togglableList(world, words.at(0)).itemsSortedByTitle()) {
        auto* group = dynamic_cast<OZPreferenceBundleGroup*>(item.get());
        const auto* file = dynamic_cast<OZTogglablePkgFile*>(item.get());
        const auto package = group != nullptr  ? group->package()
                             : file != nullptr ? file->package()
                                               : nullptr;
        world.say(item->title() + " (" + item->identifier() + ")" +
                  (package ? " of " + package->identifier() : "") +
                  (item->iconURL() ? ", icon " + *item->iconURL() : "") +
                  (item->itemDescription() ? ": " + *item->itemDescription() : ""));
    }
}

/// "switch LIST ITEM ACTION…" lets one item, or "all", be "on" or "off", and be told to "apply" or "discard"
/// that. Says what the last two did, and the state then.
void change(World& world, const Words& words) {
    auto& list = togglableList(world, words.at(0));
    const auto found = words.at(1) == "all" ? nullptr : list.itemWithIdentifier(words[1]);
    if (!found && words[1] != "all") {
        return world.say("unknown");
    }
    OZTogglableItem& item = found ? *found : list;
    std::string said;
    for (auto word = words.begin() + 2; word != words.end(); ++word) {
        if (*word == "on" || *word == "off") {
            item.setEnabledState(*word == "on");
        } else {
            const bool isDone = *word == "apply" ? item.applyChanges() : item.discardChanges();
            said += isDone ? *word + ", " : "no " + *word + ", ";
        }
    }
    world.say(said + stateOf(item, item.identifier()));
}

/// "toggler WORD…": "ADDON=on" and "ADDON=off" move an add-on's switch, "all" toggles all of them, "auto=on"
/// and "auto=off" are the user's choice about dependencies.
void toggler(World& world, const Words& words) {
    auto& workspace = world.builder().packageWorkspace();
    OZCSAddonToggler toggler(workspace, world.device().standardUserDefaults());
    for (const auto& word : words) {
        const std::string name = word.substr(0, word.find('='));
        const bool isOn = word.ends_with("=on");
        if (word == "all") {
            toggler.toggleAll();
        } else if (name == "auto") {
            toggler.setAutoManageDependencies(isOn);
        } else {
            toggler.setEnabledStateOfAddon(
                static_cast<OZCSAddon&>(*workspace.CSAddonList().itemWithIdentifier(name)), isOn);
        }
    }
    world.say(stateOf(workspace.CSAddonList(), toggler.autoManageDependencies() ? "auto" : "manual"));
}

/// "daemon LABEL": one that need not be in the table.
void daemon(World& world, const Words& words) {
    const auto daemon = OZDaemon::make(world.device(), words.at(0));
    world.say(daemon ? daemon->title() : "none");
}

/// "overridden LABEL LISTING": what the service manager's listing says.
void overridden(World& world, const Words& words) {
    const auto overrides = OZOverrideDaemon::overridesInListing(words.at(1));
    world.say(OZOverrideDaemon::isEnabledIn(overrides, words[0]) ? "on" : "off");
}

void restore(World& world, const Words& /*words*/) {
    world.builder().systemRestore()->restore();
}

OZDeletableItemList& deletableList(World& world, const std::string& name) {
    return name == "dictionaries" ? static_cast<OZDeletableItemList&>(world.builder().dictionaryList())
                                  : world.builder().preferenceFileList();
}

/// Removes the first row with a title, as a user does who sees it.
void deleteRow(OZDeletableItemList& list, const std::string& title) {
    const auto items = list.allItems();
    const auto row = std::ranges::find(items, title, &OZDeletableItem::title);
    list.deleteItemAtIndex(static_cast<size_t>(row - items.begin()));
}

/// "rows LIST": the titles of "dictionaries" or "preferences"; "paths", "icons" or "sizes" behind it: a line
/// for each with its identifier, icon or size.
void rows(World& world, const Words& words) {
    auto& list = deletableList(world, words.at(0));
    std::string titles;
    for (const auto& item : list.allItems()) {
        if (words.size() == 1) {
            titles += (titles.empty() ? "" : ", ") + item->title();
        } else {
            world.say(item->title() + ": " +
                      (words[1] == "paths"   ? item->identifier()
                       : words[1] == "icons" ? item->iconURL().value_or("none")
                                             : item->humanReadableSize()));
        }
    }
    if (words.size() == 1) {
        world.say(titles.empty() ? "nothing" : titles);
    }
}

/// "delete LIST TITLE…".
void deleteRows(World& world, const Words& words) {
    auto& list = deletableList(world, words.at(0));
    std::for_each(words.begin() + 1, words.end(), [&](const auto& title) { deleteRow(list, title); });
}

void search(World& world, const Words& words) {
    deletableList(world, words.at(0)).reloadItems();
}

/// Says when the preference daemon's restart starts and ends, by the seconds that the main queue was told of.
class Reloads : public OZPrefDaemonReloadDelegate {
  public:
    void prefDaemonReloadStarted() override { note("started"); }
    void prefDaemonReloadEnded() override { note("ended"); }
    void note(const char* what) {
        said += fmt::format("{}{} at {}", said.empty() ? "" : ", ", what, seconds);
    }

    double seconds = 0;
    std::string said;
};

/// "reloads WORD…": "-TITLE" deletes a preference file, a number lets so many seconds pass, "now" asks for a
/// restart, "end" lets the tool see the file "stop" and waits for its end, "close" lets go of the list.
void reloads(World& world, const Words& words) {
    auto& device = world.device();
    device.mainQueue().setManualClock(true);
    Reloads reloads;
    std::unique_ptr<OZPreferenceFileList> list;
    for (const auto& word : words) {
        if (!list) {
            list = std::make_unique<OZPreferenceFileList>(device, &world.builder().appList(),
                                                          [](auto) { return std::nullopt; });
            list->setPrefDaemonReloadDelegate(&reloads);
        }
        if (word.starts_with('-')) {
            deleteRow(*list, word.substr(1));
        } else if (word == "now") {
            list->reloadPrefDaemon();
        } else if (word == "close") {
            list.reset();
        } else if (word == "end") {
            bool hasEnded = false;
            const platform::Observation observation(
                device.notificationCenter(), OZTaskDidTerminateNotification,
                list->prefDaemonReloadTask().get(), [&](const auto&) { hasEnded = true; });
            const auto stop = world.folder.folder() / "stop";
            std::ofstream(stop) << "now";
            if (!device.mainQueue().runUntil([&] { return hasEnded; }, 30)) {
                throw std::runtime_error("the tool does not end");
            }
            std::filesystem::remove(stop);
        } else {
            const double end = reloads.seconds + std::stod(word);
            while (reloads.seconds < end) {
                reloads.seconds += 0.25;
                device.mainQueue().advance(0.25);
                device.mainQueue().runPending();
            }
        }
    }
    if (list && list->prefDaemonReloadTask()) {
        reloads.said += ", busy";
    }
    world.say(reloads.said.empty() ? "nothing" : reloads.said);
}

const Verbs verbs{
    {"items", items},       {"titles", titles},         {"switch", change},   {"toggler", toggler},
    {"daemon", daemon},     {"overridden", overridden}, {"restore", restore}, {"rows", rows},
    {"delete", deleteRows}, {"search", search},         {"reloads", reloads},
};

} // namespace

} // namespace scenarios
