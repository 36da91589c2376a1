// What scenarios can do with packages and their graph.

#include "Model/Items/Togglable/OZCSAddon.h"
#include "Model/Items/Togglable/OZPreferenceBundle.h"
#include "Model/Packages/OZPackageList.h"
#include "Model/Packages/OZPackageWorkspace.h"
#include "Tests/Scenarios/Verbs.h"

namespace scenarios::packages {

std::string namesOf(const std::vector<OZPackage*>& packages) {
    std::multiset<std::string> names;
    for (const OZPackage* package : packages) {
        names.insert(package->identifier());
    }
    return joined(names, "none");
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
VERB("graph") {
    if (!words.empty()) {
        std::ofstream(world.folder.folder() / "answer") << words[0];
        world.folder.addTool("/usr/bin/dpkg-query", "cat \"$OZVARINE_DEVICE/answer\"");
    }
    Words texts;
    for (const auto& [identifier, package] : OZPackageList(world.device()).allPackages()) {
        const std::string dependencies = namesOf(package->directDependencies());
        texts.push_back(identifier + (package->name() ? "[" + *package->name() + "]" : "") +
                        (package->iconURL() ? "(" + *package->iconURL() + ")" : "") +
                        (dependencies == "none" ? "" : " > " + dependencies));
    }
    world.print(joined(texts, "nothing", "; "));
}

/// "package NAME": what is told of it, and all that are linked to it.
VERB("package") {
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
VERB("owners") {
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

/// "edit BYTES PATH…": whether a package's list of files with these bytes changes when paths are added
/// ("+/path") and removed ("-/path"), and the bytes whenever it does. Its date and mode have to stay.
VERB("edit") {
    const std::string path = "/var/lib/dpkg/info/edited.list";
    world.folder.addFile(path, words.at(0));
    const auto file = world.folder.hostPath(path);
    const auto date = std::filesystem::file_time_type::clock::now() - std::chrono::hours(5000);
    std::filesystem::last_write_time(file, date);
    std::filesystem::permissions(file, std::filesystem::perms(0640));
    OZPackage package(world.device(), "edited");
    Words said;
    for (const auto& word : rest(words)) {
        const std::string before = world.folder.contents(path);
        const bool isDone =
            word[0] == '+' ? package.addFilePath(word.substr(1)) : package.removeFilePath(word.substr(1));
        const std::string bytes = world.folder.contents(path);
        said.push_back((isDone ? "yes" : "no") + (bytes == before ? "" : " " + escaped(bytes)));
    }
    if (std::filesystem::last_write_time(file) != date ||
        std::filesystem::status(file).permissions() != std::filesystem::perms(0640)) {
        said.emplace_back("another date or mode");
    }
    world.say(joined(said));
    world.takeEffects();
}

/// "listed PACKAGE": the paths of its list of files.
VERB("listed") {
    const auto paths = OZPackage(world.device(), words.at(0)).pathsOfInstalledFiles();
    world.say(paths ? fmt::format("{}", *paths) : "none");
}

/// All packages with what they bring along that can be switched, and the add-ons that they need and that need
/// them.
VERB("infos") {
    auto& workspace = world.builder().packageWorkspace();
    for (const auto& [identifier, info] : workspace.packageInfoByPkgId()) {
        auto needed = workspace.CSAddonDependenciesForPkgId(identifier);
        auto needing = workspace.CSAddonDependantsForPkgId(identifier);
        std::ranges::sort(needed, {}, &OZCSAddon::identifier);
        std::ranges::sort(needing, {}, &OZCSAddon::identifier);
        world.say(info->name() + ":" + identifiersOf(info->CSAddons()) +
                  (info->preferenceBundle() ? ", page " + info->preferenceBundle()->identifier() : "") +
                  (info->iconURL() ? ", icon " + *info->iconURL() : "") +
                  (needed.empty() ? "" : ", needs" + identifiersOf(needed)) +
                  (needing.empty() ? "" : ", for" + identifiersOf(needing)) +
                  (workspace.finishedLoading() ? "" : ", not loaded"));
    }
}

} // namespace scenarios::packages
