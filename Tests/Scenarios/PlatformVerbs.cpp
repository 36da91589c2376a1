// What scenarios can do with property lists, facts, tools and stored choices.

#include "Platform/Device/HostOutput.h"
#include "Platform/Formats/PropertyList.h"
#include "Platform/Formats/StringsFile.h"
#include "Tests/Platform/PropertyListTexts.h"
#include "Tests/Scenarios/Verbs.h"

#include <array>

namespace scenarios {

namespace {

using namespace platform;
namespace fs = std::filesystem;

/// A file's content as it stands, a property list's as one value.
VERB("show") {
    const std::string content = world.folder.contents(words.at(0));
    const auto list = parsePropertyList(content);
    list ? world.say(textOf(list.value())) : world.print(content);
}

VERB("reopen") {
    world.reopen();
}

/// What comes of opening files of the host, in the device folder, for output.
VERB("output") {
    const Descriptor tree(::open((world.folder.folder() / "Root").c_str(), O_PATH | O_CLOEXEC));
    for (const auto& word : words) {
        const auto opened = HostOutput::open(world.folder.folder() / word, tree.get());
        world.say(opened ? "ok" : opened.error());
    }
}

/// What stands behind paths of tools: a program of the host, or none.
VERB("tools") {
    const auto& folder = world.folder.folder();
    const ToolTable table(folder / "Tools", folder, folder / "Root");
    sayAnswers(world, words, [&](const std::string& path) {
        const auto tool = table.toolAt(path);
        return !tool               ? "none"
               : tool->isStandIn() ? tool->command({"name"}, world.device().fileManager())->path
                                   : "host";
    });
}

/// What is known of the device where a person gives "model=iPhone9,3" or "version=9.3.5".
VERB("facts") {
    world.reopen();
    world.device();
    GivenFacts given;
    for (const auto& word : words) {
        const auto [kind, value] = namedValue(word);
        (kind == "model" ? given.hardwareModel : given.systemVersion) = value;
    }
    const auto device = Device::open(world.folder.folder(), given).value();
    const DeviceFacts& facts = device->facts();
    std::string text =
        fmt::format("{}, {}, {}", facts.hardwareModel, facts.systemVersion, facts.foundationVersion);
    for (const auto& [path, volume] : facts.volumes) {
        text += fmt::format(", {} {} of {}", path, volume.free, volume.size);
    }
    world.say(text);
}

/// The Foundation versions of product versions.
VERB("generations") {
    sayAnswers(world, words, [&](const std::string& version) {
        const auto found = systemVersionForProductVersion(version);
        return found ? fmt::format("{}", found->foundationVersion) : "none";
    });
}

/// What stored choices say of a key.
std::string choiceAt(const UserDefaults& values, const std::string& key) {
    const auto object = values.objectForKey(key);
    return (object ? textOf(*object) : "none") + (values.stringForKey(key) ? " as string" : "") +
           (values.arrayForKey(key) ? " as array" : "") +
           (values.dictionaryForKey(key) ? " as dictionary" : "");
}

/// The stored choices of a process: "defaults one set {…}", "… remove a", "… get a b", "… true a b" (which of
/// them are), "… save".
VERB("defaults") {
    world.device();
    using Processes = std::map<std::string, std::shared_ptr<Device>>;
    auto& device = world.kept<Processes>([] { return Processes(); })[words.at(0)];
    if (!device) {
        device = Device::open(world.folder.folder()).value();
        device->warnings().setReceiver([&world](const auto& line) { world.sayWarning(line); });
    }
    UserDefaults& values = device->standardUserDefaults();
    const Words keys = rest(words, 2);
    if (words.at(1) == "get") {
        sayAnswers(world, keys, [&](const auto& key) { return choiceAt(values, key); });
    } else if (words[1] == "true") {
        const auto isTrue = [&](const auto& key) { return values.boolForKey(key); };
        world.say(joined(keys | std::views::filter(isTrue)));
    } else if (words[1] == "save") {
        sayAnswers(world, {""}, [&](const auto&) {
            const auto saved = values.synchronize();
            return saved ? "ok" : strerrorname_np(saved.error().value());
        });
    } else if (words[1] == "remove") {
        values.removeObjectForKey(keys.at(0));
    } else {
        const Value given = valueOf(keys.at(0));
        if (words[1] == "register") {
            return values.registerDefaults(*given.as<Dictionary>());
        }
        for (const auto& [key, value] : *given.as<Dictionary>()) {
            value.as<bool>() != nullptr ? values.setBool(key, *value.as<bool>())
                                        : values.setObject(key, value);
        }
    }
}

/// A word that names a file stands for its content.
std::string textNamed(World& world, const std::string& word) {
    return word.starts_with('/') && fs::is_regular_file(world.folder.hostPath(word))
               ? world.folder.contents(word)
               : word;
}

std::string parsed(const std::string& bytes) {
    const auto value = parsePropertyList(bytes);
    if (!value) {
        return strerrorname_np(value.error().value());
    }
    const bool stays = std::ranges::all_of(
        std::array{PropertyListFormat::xml, PropertyListFormat::binary},
        [&](auto format) { return parsePropertyList(serializePropertyList(*value, format)) == *value; });
    return textOf(*value) + (stays ? "" : " changes when it is written");
}

/// The values of property lists.
VERB("parse") {
    sayAnswers(world, words, [&](const auto& word) { return parsed(textNamed(world, word)); });
}

/// The same, with the XML around them.
VERB("xml") {
    sayAnswers(world, words, [&](const auto& word) { return parsed(tests::xml(textNamed(world, word))); });
}

/// The pairs of ".strings" files, or the lines that are wrong.
VERB("strings") {
    sayAnswers(world, words, [&](const auto& word) -> std::string {
        const auto table = parseStringsFile(textNamed(world, word));
        if (!table) {
            return fmt::format("line {}{}", table.error().line,
                               table.error().reason.empty() ? " for no reason" : "");
        }
        for (const auto& [key, text] : *table) {
            world.say(escaped(key + " = " + text));
        }
        return "ok";
    });
}

/// What a verb says of a text, once where it is the same in all encodings.
VERB("encoded") {
    const std::string text = textNamed(world, words.at(1));
    std::map<Lines, Words> encodingsBySaid;
    for (const char* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        for (const char* mark : {"\uFEFF", ""}) {
            if (mark[0] != '\0' || !std::string_view(encoding).starts_with("UTF-32")) {
                const Words bytes = {tests::encoded(mark + text, encoding)};
                encodingsBySaid[saidBy(world, words[0], bytes)].emplace_back(encoding);
            }
        }
    }
    for (const auto& [said, encodings] : encodingsBySaid) {
        if (encodingsBySaid.size() > 1) {
            world.say(fmt::format("{}:", fmt::join(encodings, ", ")));
        }
        std::ranges::for_each(said, [&](const auto& line) { world.say(line); });
    }
}

} // namespace

} // namespace scenarios
