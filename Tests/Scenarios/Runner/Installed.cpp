// What a scenario's lines install on its device: applications and packages.

#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

using platform::Dictionary;
using platform::Value;

void World::giveApp(const Words& words) {
    const std::string& identifier = words.at(1);
    std::string bundle = "/Applications/" + identifier + ".app";
    Dictionary info{{"ApplicationType", words[0] == "user" ? "User" : "System"},
                    {"CFBundleExecutable", words.at(2)},
                    {"CFBundleIdentifier", identifier},
                    {"CFBundleDisplayName", words[2]}};
    bool hasIcon = true;
    for (size_t at = 3; at + 1 < words.size(); at += 2) {
        const std::string& value = words[at + 1];
        const size_t equals = std::min(value.find('='), value.size());
        if (words[at] == "at") {
            bundle = value;
        } else if (words[at] == "container" || words[at] == "in") {
            info[words[at] == "in" ? "BundleContainer" : "Container"] = value;
        } else if (words[at] == "group" || words[at] == "plugin") {
            Value& containers = info[words[at] == "group" ? "GroupDataContainers" : "PluginDataContainers"];
            (*containers.as<Dictionary>())[value.substr(0, equals)] = value.substr(equals + 1);
        } else if (words[at] == "without") {
            hasIcon = value != "icon";
        } else if (words[at] == "excluded") {
            _exclusions.emplace_back(identifier, value);
        } else {
            throw std::runtime_error("unknown word of an application: " + words[at]);
        }
    }
    info["Path"] = bundle;
    if (words[0] == "user") {
        info.emplace("Container", "/c/" + identifier);
    }
    folder.addFile(bundle + "/" + words[2]);
    folder.addFile(bundle + "/Info.plist",
                   platform::serializePropertyList(Dictionary{{"CFBundleIconFile", "icon.png"}},
                                                   platform::PropertyListFormat::xml));
    if (hasIcon) {
        folder.addFile(bundle + "/icon.png");
    }
    _facts["Applications"].as<platform::Array>()->emplace_back(info);
}

void World::giveBundle(const Words& words, bool isContainer) {
    Dictionary list = words.size() > 2 ? *valueOf(words[2]).as<Dictionary>() : Dictionary{};
    list.emplace(isContainer ? "MCMMetadataIdentifier" : "CFBundleIdentifier", words.at(1));
    if (!isContainer) {
        list.emplace("CFBundleExecutable", "Main");
        giveItem(words[0] + "/Main", "code", false);
    }
    giveItem(words[0] + (isContainer ? "/.com.apple.mobile_container_manager.metadata.plist" : "/Info.plist"),
             platform::serializePropertyList(list, platform::PropertyListFormat::binary), false);
}

void World::givePackage(std::string_view rest) {
    const std::string name = takeWord(rest);
    std::string fields;
    std::string files;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find("; "), rest.size());
        const std::string part(rest.substr(0, end));
        (part.starts_with('/') ? files : fields) += part + "\n";
        rest.remove_prefix(std::min(end + 2, rest.size()));
    }
    give(
        "host mkdir -p Root/var; cd Root/var && mkdir -p log lib/dpkg/info lib/dpkg/updates && cd lib/dpkg &&"
        " touch status available");
    // Put together beside the device.
    const std::string package = "/../package";
    folder.addFile(package + "/DEBIAN/control",
                   "Package: " + name + "\nVersion: 1.0\nArchitecture: iphoneos-arm\nMaintainer: a <a@b>\n" +
                       "Description: test\n" + fields);
    for (const auto& line : linesOf(files)) {
        for (const auto& file : wordsOf(line)) {
            folder.addFile(package + file, file);
        }
    }
    give("host dpkg-deb --root-owner-group -b package package.deb && dpkg --root=Root --force-architecture"
         " --force-depends --log=/dev/null -i package.deb && rm -r package package.deb");
}

} // namespace scenarios
