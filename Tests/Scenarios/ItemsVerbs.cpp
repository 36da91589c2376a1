// What scenarios can do with togglable and deletable items.

#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"
#include "Model/Items/Deletable/Preferences/OZPreferenceFileList.h"
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
#include "Tests/Scenarios/Verbs.h"

namespace scenarios::items {

OZTogglableItemList& togglables(World& world, const std::string& name) {
    if (name == "daemons") {
        return world.builder().daemonList();
    }
    auto& workspace = world.builder().packageWorkspace();
    return name == "addons" ? static_cast<OZTogglableItemList&>(workspace.CSAddonList())
                            : workspace.prefBundleList();
}

/// Such as "name", "-name" for what is off, "name>off" for what is to change, "name?" for a page of another
/// version, "-group(-a b)".
std::string stateOf(OZTogglableItem& item, const std::string& name) {
    const bool isOn = item.currentEnabledState();
    const auto* page = dynamic_cast<OZPreferenceBundle*>(&item);
    const std::string text = (isOn ? "" : "-") + name +
                             (page == nullptr || page->isForCurrentiOSVersion() ? "" : "?") +
                             (item.enabledState() == isOn ? ""
                              : isOn                      ? ">off"
                                                          : ">on");
    auto* list = dynamic_cast<OZTogglableItemList*>(&item);
    Words members;
    for (const auto& [key, member] : list == nullptr ? OZTogglableItemMap() : list->items()) {
        members.push_back(stateOf(*member, key));
    }
    return list == nullptr ? text : text + "(" + joined(members) + ")";
}

/// "items LIST": "addons", "pages" or "daemons".
VERB("items") {
    world.say(stateOf(togglables(world, words.at(0)), ""));
}

/// "titles LIST": a line for each item, in the order of titles, with its package, icon and description.
VERB("titles") {
    for (const auto& item : togglables(world, words.at(0)).itemsSortedByTitle()) {
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
VERB("switch") {
    auto& list = togglables(world, words.at(0));
    const auto found = list.itemWithIdentifier(words.at(1));
    if (!found && words[1] != "all") {
        return world.say("unknown");
    }
    OZTogglableItem& item = found ? *found : list;
    std::string said;
    for (const auto& word : rest(words, 2)) {
        if (word == "on" || word == "off") {
            item.setEnabledState(word == "on");
        } else {
            said += (word == "apply" ? item.applyChanges() : item.discardChanges()) ? "" : "no ";
            said += word + ", ";
        }
    }
    world.say(said + stateOf(item, item.identifier()));
}

/// "toggler WORD…": "ADDON=on" and "ADDON=off" move an add-on's switch, "all" toggles all of them, "auto=on"
/// and "auto=off" are the user's choice about dependencies.
VERB("toggler") {
    auto& workspace = world.builder().packageWorkspace();
    OZCSAddonToggler toggler(workspace, world.device().standardUserDefaults());
    for (const auto& word : words) {
        const auto [name, state] = namedValue(word);
        if (name == "all") {
            toggler.toggleAll();
        } else if (name == "auto") {
            toggler.setAutoManageDependencies(state == "on");
        } else {
            const auto addon = workspace.CSAddonList().itemWithIdentifier(name);
            toggler.setEnabledStateOfAddon(static_cast<OZCSAddon&>(*addon), state == "on");
        }
    }
    world.say(stateOf(workspace.CSAddonList(), toggler.autoManageDependencies() ? "auto" : "manual"));
}

/// "overridden LABEL LISTING…": what the service manager's listings say.
VERB("overridden") {
    sayAnswers(world, rest(words), [&](const std::string& listing) {
        const auto overrides = OZOverrideDaemon::overridesInListing(listing);
        return OZOverrideDaemon::isEnabledIn(overrides, words[0]) ? "on" : "off";
    });
}

VERB("restore") {
    world.builder().systemRestore()->restore();
}

OZDeletableItemList& deletables(World& world, const std::string& name) {
    return name == "dictionaries" ? static_cast<OZDeletableItemList&>(world.builder().dictionaryList())
                                  : world.builder().preferenceFileList();
}

/// "rows LIST": the titles of "dictionaries" or "preferences"; with "paths", "icons" or "sizes" behind it a
/// line for each.
VERB("rows") {
    Words titles;
    for (const auto& item : deletables(world, words.at(0)).allItems()) {
        titles.push_back(item->title());
        if (words.size() > 1) {
            world.say(item->title() + ": " +
                      (words[1] == "paths"   ? item->identifier()
                       : words[1] == "icons" ? item->iconURL().value_or("none")
                                             : item->humanReadableSize()));
        }
    }
    if (words.size() == 1) {
        world.say(joined(titles, "nothing", ", "));
    }
}

/// Removes the first row with a title, as a user does who sees it.
void deleteRow(OZDeletableItemList& list, const std::string& title) {
    const auto items = list.allItems();
    const auto row = std::ranges::find(items, title, &OZDeletableItem::title);
    list.deleteItemAtIndex(static_cast<size_t>(row - items.begin()));
}

/// "delete LIST TITLE…".
VERB("delete") {
    auto& list = deletables(world, words.at(0));
    std::ranges::for_each(rest(words), [&](const auto& title) { deleteRow(list, title); });
}

/// Says when the preference daemon's restart starts and ends, by the seconds that the main queue was told of.
struct Reloads : OZPrefDaemonReloadDelegate {
    void prefDaemonReloadStarted() override { said += fmt::format("started at {}, ", seconds); }
    void prefDaemonReloadEnded() override { said += fmt::format("ended at {}, ", seconds); }

    double seconds = 0;
    std::string said;
};

/// "reloads WORD…": "-TITLE" deletes a preference file, a number lets so many seconds pass, "now" asks for a
/// restart, "end" lets the tool see the file "stop" and waits for its end, "close" lets go of the list.
VERB("reloads") {
    auto& device = world.device();
    auto& queue = device.mainQueue();
    queue.setManualClock(true);
    Reloads reloads;
    auto list = std::make_unique<OZPreferenceFileList>(device, &world.builder().appList(),
                                                       [](auto) { return std::nullopt; });
    list->setPrefDaemonReloadDelegate(&reloads);
    for (const auto& word : words) {
        if (word.starts_with('-')) {
            deleteRow(*list, word.substr(1));
        } else if (word == "now") {
            list->reloadPrefDaemon();
        } else if (word == "close") {
            list.reset();
        } else if (word == "end") {
            bool isRunning = true;
            const platform::Observation end(device.notificationCenter(), OZTaskDidTerminateNotification,
                                            list->prefDaemonReloadTask().get(),
                                            [&](const auto&) { isRunning = false; });
            world.give("host touch stop");
            reloads.said += queue.runUntil([&] { return !isRunning; }, 30) ? "" : "hanging, ";
            world.give("host rm stop");
        } else {
            for (const double end = reloads.seconds + std::stod(word); reloads.seconds < end;) {
                reloads.seconds += 0.25;
                queue.advance(0.25);
                queue.runPending();
            }
        }
    }
    world.say(reloads.said + (list && list->prefDaemonReloadTask() ? "busy" : "idle"));
}

} // namespace scenarios::items
