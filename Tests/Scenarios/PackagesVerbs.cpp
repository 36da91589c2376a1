// What scenarios can do with packages and their graph.

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Packages/OZPackageList.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Tests/Scenarios/Runner/World.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include <fmt/ranges.h>

namespace scenarios {

namespace {

namespace fs = std::filesystem;

std::string namesOf(const std::vector<OZPackage*>& packages) {
    std::multiset<std::string> names;
    for (const OZPackage* package : packages) {
        names.insert(package->identifier());
    }
    return names.empty() ? "none" : fmt::format("{}", fmt::join(names, " "));
}

template <class Items>
std::string identifiersOf(const Items& items) {
    std::string text;
    for (const auto& item : items) {
        text += " " + item->identifier();
    }
    return text;
}

/// "graph [ANSWER]": all packages, as the device's tool tells them or as this answer of it does; each as
/// "package[name](icon)>dependency>dependency".
void graph(World& world, const Words& words) {
    if (!words.empty()) {
        std::ofstream(world.folder.folder() / "answer") << words[0];
        world.folder.addTool("/usr/bin/dpkg-query", "cat \"$OZVARINE_DEVICE/answer\"");
    }
    std::string text;
    for (const auto& [identifier, package] : OZPackageList(world.device()).allPackages()) {
        const std::string dependencies = namesOf(package->directDependencies());
        text += (text.empty() ? "" : "; ") + identifier +
                (package->name() ? "[" + *package->name() + "]" : "") +
                (package->iconURL() ? "(" + *package->iconURL() + ")" : "") +
                (dependencies == "none" ? "" : " > " + dependencies);
    }
    world.print(text.empty() ? "nothing" : text);
}

/// "package NAME": what is told of it, and all that are linked to it.
void package(World& world, const Words& words) {
    const auto package = OZPackageList(world.device()).packageWithIdentifier(words.at(0));
    if (!package) {
        return world.say("none");
    }
    world.print(package->description());
    world.say("needs " + namesOf(package->directDependencies()) + ", with what these need " +
              namesOf(package->recursiveDependencies()));
    world.say("needed by " + namesOf(package->directDependants()) + ", with what needs these " +
              namesOf(package->recursiveDependants()));
}

/// "owners PATH…": whose these files are.
void owners(World& world, const Words& words) {
    OZPackageList list(world.device());
    if (words.size() == 1) {
        const auto packages = list.packagesForFileAtPath(words[0]);
        return world.say(packages ? "of" + identifiersOf(*packages) : "none");
    }
    const auto owners = list.packagesForFilesAtPaths(words);
    for (const auto& [path, packages] : owners.value_or(OZPackageList::PackagesByPath())) {
        world.print(path + " of" + identifiersOf(packages));
    }
}

/// "edit BYTES PATH…": what becomes of a package's list of files with these bytes when paths are added
/// ("+/path") and removed ("-/path"): an answer for each, and the bytes. Its date and mode have to stay.
void edit(World& world, const Words& words) {
    const std::string path = "/var/lib/dpkg/info/edited.list";
    world.folder.addFile(path, words.at(0));
    const fs::path file = world.folder.hostPath(path);
    const auto date = fs::file_time_type::clock::now() - std::chrono::hours(5000);
    fs::last_write_time(file, date);
    fs::permissions(file, fs::perms(0640));
    OZPackage package(world.device(), "edited");
    std::string said;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::string changed = word->substr(1);
        said += ((*word)[0] == '+' ? package.addFilePath(changed) : package.removeFilePath(changed)) ? "yes "
                                                                                                     : "no ";
    }
    const bool isKept =
        fs::last_write_time(file) == date && fs::status(file).permissions() == fs::perms(0640);
    const std::string bytes = world.folder.contents(path);
    world.say(said + (bytes == words[0] ? "unchanged" : escaped(bytes)) +
              (isKept ? "" : " with another date or mode"));
    world.takeEffects();
}

/// "listed PACKAGE": the paths of its list of files.
void listed(World& world, const Words& words) {
    const auto paths = OZPackage(world.device(), words.at(0)).pathsOfInstalledFiles();
    world.say(paths ? fmt::format("{}", *paths) : "none");
}

/// All packages with what they bring along that can be switched, and the add-ons that they need and that need
/// them.
void infos(World& world, const Words& /*words*/) {
    auto& workspace = world.builder().packageWorkspace();
    for (const auto& [identifier, info] : workspace.packageInfoByPkgId()) {
        world.say(info->name() + ":" + identifiersOf(info->CSAddons()) +
                  (info->preferenceBundle() ? ", page " + info->preferenceBundle()->identifier() : "") +
                  (info->iconURL() ? ", icon " + *info->iconURL() : "") +
                  (workspace.finishedLoading() ? "" : ", not loaded"));
        for (auto [text, addons] : {std::pair("needs", workspace.CSAddonDependenciesForPkgId(identifier)),
                                    {"needed by", workspace.CSAddonDependantsForPkgId(identifier)}}) {
            std::ranges::sort(addons, {}, &OZCSAddon::identifier);
            if (!addons.empty()) {
                world.say(std::string("  ") + text + identifiersOf(addons));
            }
        }
    }
}

const Verbs verbs{{"graph", graph}, {"package", package}, {"owners", owners},
                  {"edit", edit},   {"listed", listed},   {"infos", infos}};

} // namespace

} // namespace scenarios
