// What scenarios can do with paths, files and formats.

#include "Platform/Formats/PropertyList.h"
#include "Platform/Formats/StringsFile.h"
#include "Tests/Platform/PropertyListTexts.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/HostFile.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ranges>
#include <set>
#include <stdexcept>

#include <fmt/format.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace scenarios {

namespace {

using namespace platform;
namespace fs = std::filesystem;

/// A file's content as it stands, a property list's as one value.
void show(World& world, const Words& words) {
    const std::string content = world.folder.contents(words.at(0));
    const auto list = parsePropertyList(content);
    list ? world.say(textOf(list.value())) : world.print(content);
}

void reopen(World& world, const Words& /*words*/) {
    world.reopen();
}

/// Says each subject's answer, or one for all where they agree. "ok" goes without saying.
void sayAnswers(World& world, const Words& subjects,
                const std::function<std::string(const std::string&)>& ask) {
    std::vector<std::pair<std::string, std::string>> answers;
    for (const auto& subject : subjects) {
        answers.emplace_back(subject, ask(subject));
    }
    const std::string& first = answers.at(0).second;
    if (std::ranges::any_of(answers, [&](const auto& answer) { return answer.second != first; })) {
        for (const auto& [subject, answer] : answers) {
            world.say(escaped(subject) + ": " + answer);
        }
    } else if (first != "ok") {
        world.say(first);
    }
}

const char* nameOf(FileType type) {
    return type == FileType::regular        ? "file"
           : type == FileType::directory    ? "folder"
           : type == FileType::symbolicLink ? "link"
           : type == FileType::fifo         ? "pipe"
                                            : "unknown";
}

std::string textOf(const FileAttributes& attributes) {
    return fmt::format("{} {:o} {}:{}", nameOf(attributes.type), attributes.permissions, attributes.owner,
                       attributes.group);
}

std::string textOf(Words names) {
    std::ranges::sort(names);
    return fmt::format("{}", fmt::join(names, " "));
}

std::string textOf(const FileSystemAttributes& attributes) {
    return attributes.size > 0 ? "some" : "none";
}

std::string textOf(const std::string& text) {
    return text;
}

/// A value, "ok", or an error's name.
template <class T>
std::string answerOf(const Result<T>& result) {
    if (!result) {
        return strerrorname_np(result.error().value());
    }
    if constexpr (requires { textOf(*result); }) {
        return textOf(*result);
    }
    return "ok";
}

/// What a walk gives, sorted, each with a mark of its type; "!" stands before what comes twice, before its
/// folder or with two types, "?" behind what has no attributes.
std::string answerOf(const std::unique_ptr<DirectoryEnumerator>& walk, const std::string& skipped = "") {
    if (!walk) {
        return "no walk";
    }
    const Words skippedNames = wordsOf(skipped);
    std::set<std::string> seen = {""};
    Words names;
    while (const auto entry = walk->nextObject()) {
        const std::string path(*entry);
        const FileType type = walk->fileType();
        const auto attributes = walk->fileAttributes();
        const bool isRight = seen.contains(path.substr(0, path.rfind('/') + 1)) &&
                             seen.insert(path + "/").second && (!attributes || attributes->type == type);
        const char* mark = type == FileType::directory      ? "/"
                           : type == FileType::symbolicLink ? "@"
                           : type == FileType::fifo         ? "|"
                                                            : "";
        names.push_back((isRight ? "" : "!") + path + mark + (attributes ? "" : "?"));
        if (std::ranges::find(skippedNames, path) != skippedNames.end()) {
            walk->skipDescendants();
        }
    }
    const bool isOver = answerOf(walk->fileAttributes()) == "ENOENT" && !walk->nextObject();
    return textOf(names) + (isOver ? "" : "!");
}

std::string existence(FileManager& files, const std::string& path) {
    bool isFolder = false;
    bool isFolderToo = true;
    const bool exists = files.fileExistsAtPath(path, &isFolder);
    const bool isClear = files.fileExistsAtPath(path, &isFolderToo) == exists && isFolder == isFolderToo;
    return !isClear ? "unclear" : isFolder ? "folder" : exists ? "file" : "nothing";
}

std::string writeTo(Result<FileHandle> file, const std::string& text) {
    return !file || !file->seekToEnd() ? answerOf(file) : answerOf(file->write(text));
}

/// Does something with a path by a file manager's operation. An argument stands behind "=".
std::string act(FileManager& files, const std::string& name, const std::string& path, const std::string& to) {
    const auto number = [&](int base) { return static_cast<uint32_t>(std::stoul(to, nullptr, base)); };
    const auto limit = [&] { return to.empty() ? FileManager::defaultContentLimit : std::stoul(to); };
    const auto folder = [&](auto kind) { return answerOf(files.createDirectoryAtPath(path, kind)); };
    const std::map<std::string, std::function<std::string()>> acts = {
        {"append", [&] { return writeTo(files.openForWriting(path), to); }},
        {"cd", [&] { return answerOf(files.changeCurrentDirectoryPath(path)); }},
        {"copy", [&] { return answerOf(files.copyItemAtPath(path, to)); }},
        {"create", [&] { return writeTo(files.createFileAtPath(path), to); }},
        {"cwd", [&] { return files.currentDirectoryPath(); }},
        {"date",
         [&] {
             return answerOf(files.setModificationDateOfItemAtPath(path, {number(10), 42}));
         }},
        {"dated", [&] { return std::to_string(files.attributesOfItemAtPath(path)->modified.tv_nsec); }},
        {"destination", [&] { return answerOf(files.destinationOfSymbolicLinkAtPath(path)); }},
        {"exists", [&] { return existence(files, path); }},
        {"folder", [&] { return answerOf(files.folderAtPath(path)); }},
        {"forget", [&] { return files.forgetLastFolder(), "ok"; }},
        {"item", [&] { return answerOf(files.itemAtPath(path)); }},
        {"link", [&] { return answerOf(files.createSymbolicLinkAtPath(path, to)); }},
        {"list", [&] { return answerOf(files.contentsOfDirectoryAtPath(path)); }},
        {"lookOnly", [&] { return answerOf(files.lookOnly()); }},
        {"mkdir", [&] { return folder(IntermediateFolders::refuse); }},
        {"mkdirs", [&] { return folder(IntermediateFolders::create); }},
        {"mode", [&] { return answerOf(files.setPermissionsOfItemAtPath(path, number(8))); }},
        {"move", [&] { return answerOf(files.moveItemAtPath(path, to)); }},
        {"own", [&] { return answerOf(files.setOwnerOfItemAtPath(path, number(10), std::nullopt)); }},
        {"read", [&] { return answerOf(files.contentsAtPath(path, limit())); }},
        {"remove", [&] { return answerOf(files.removeItemAtPath(path)); }},
        {"resolve", [&] { return files.stringByResolvingSymlinksInPath(path); }},
        {"rewrite", [&] { return answerOf(files.writeContents(path, *files.contentsAtPath(path))); }},
        {"room", [&] { return answerOf(files.attributesOfFileSystemForPath(path)); }},
        {"stat", [&] { return answerOf(files.attributesOfItemAtPath(path)); }},
        {"target", [&] { return answerOf(files.attributesOfTargetAtPath(path)); }},
        {"tools", [&] { return files.pathForTools(path); }},
        {"walk", [&] { return answerOf(files.enumeratorAtPath(path), to); }},
        {"writable", [&] { return files.isWritableFileAtPath(path) ? "yes" : "no"; }},
        {"write", [&] { return answerOf(files.writeContents(path, to)); }},
        {"writeOwned", [&] { return answerOf(files.writeContents(path, to, FileOwnership{})); }},
    };
    return acts.at(name)();
}

/// "folder:name" in an opened folder, "folder::path" below it, else what a path names.
Result<Item> itemNamed(FileManager& files, const std::string& path) {
    const size_t colon = path.find(':');
    if (colon == std::string::npos) {
        return files.itemAtPath(path);
    }
    const auto folder = files.folderAtPath(path.substr(0, colon)).value();
    return path.substr(colon).starts_with("::") ? files.itemBelow(folder, path.substr(colon + 2))
                                                : Item(folder, path.substr(colon + 1));
}

std::string removeFound(const Item& folder) {
    const auto walk = folder.enumerate();
    walk->nextObject();
    return answerOf(walk->item().remove());
}

/// The same with an item of its folder.
std::string actOnItem(FileManager& files, const std::string& name, const std::string& path,
                      const std::string& to) {
    const auto found = itemNamed(files, path);
    if (!found) {
        return answerOf(found);
    }
    const Item& item = *found;
    const std::map<std::string, std::function<std::string()>> acts = {
        {"found", [&] { return "ok"; }},
        {"move", [&] { return answerOf(item.moveTo(Item(item.parent(), to))); }},
        {"open", [&] { return answerOf(item.openFolder()); }},
        {"remove", [&] { return answerOf(item.remove()); }},
        {"removeFirst", [&] { return removeFound(item); }},
        {"removeIn", [&] { return answerOf(Item(item.openFolder().value(), to).remove()); }},
        {"rename", [&] { return answerOf(item.rename(to)); }},
        {"replace", [&] { return answerOf(item.renameReplacing(to)); }},
        {"size", [&] { return fmt::format("{} bytes", item.attributes().value().size); }},
        {"stat", [&] { return answerOf(item.attributes()); }},
        {"walk", [&] { return answerOf(item.enumerate()); }},
    };
    return acts.at(name)();
}

/// The acts ("read,write=text") on each path, by the way of finding paths that a loop "paths" tells, in the
/// folder "device" of the tree, or as "let root" names it: what is beside it is out of bounds.
void onPaths(World& world, const Words& words, size_t handle, decltype(act)* actOn) {
    const auto variable = [&](const char* name, const char* usual) {
        const auto found = world.variables.find(name);
        return found == world.variables.end() ? usual : found->second;
    };
    auto& handles = world.kept<std::vector<FileManager>>([&] {
        const auto resolution =
            variable("paths", "kernel") == "kernel" ? PathResolution::kernel : PathResolution::componentWise;
        const auto files =
            FileManager::atRoot(world.folder.hostPath(variable("root", "/device")), resolution);
        return std::vector<FileManager>(files ? 2 : 0, *files);
    });
    if (handles.empty()) {
        return world.say("no root");
    }
    sayAnswers(world, {words.begin() + 1, words.end()}, [&](const std::string& path) {
        Words answers;
        std::string_view names = words[0];
        while (!names.empty()) {
            const std::string_view name = names.substr(0, names.find(','));
            names.remove_prefix(std::min(name.size() + 1, names.size()));
            const size_t equals = std::min(name.find('='), name.size());
            answers.push_back(actOn(handles[handle], std::string(name.substr(0, equals)), path,
                                    std::string(name.substr(std::min(equals + 1, name.size())))));
        }
        const bool agree = std::ranges::adjacent_find(answers, std::not_equal_to()) == answers.end();
        return escaped(agree ? answers[0] : fmt::format("{}", fmt::join(answers, ", ")));
    });
}

/// Does an action in a process of its own: "as user=501 …", "as fsize=1000 …" (files get no larger).
void as(World& world, const Words& words) {
    const size_t equals = words.at(0).find('=');
    const bool isUser = words[0].starts_with("user");
    const auto number = static_cast<uid_t>(std::stoul(words[0].substr(equals + 1)));
    const std::string said = world.folder.folder() / "said";
    std::ofstream file(said);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{number, number};
        const bool became =
            isUser ? ::setgroups(0, nullptr) == 0 && ::setresgid(number, number, number) == 0 &&
                         ::setresuid(number, number, number) == 0
                   : ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
        if (became) {
            Verbs::named(words.at(1))(world, {words.begin() + 2, words.end()});
        }
        file << fmt::format("{}", fmt::join(world.takeOutput(), "\n")) << std::flush;
        ::_exit(became ? 0 : 1);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("no such process");
    }
    for (const auto& line : linesOf(tests::contentOf(said))) {
        world.say(line.substr(2));
    }
}

/// What stands behind paths of tools: a program of the host, or none.
void tools(World& world, const Words& words) {
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
void facts(World& world, const Words& words) {
    world.reopen();
    world.device();
    GivenFacts given;
    for (const auto& word : words) {
        (word.starts_with("model=") ? given.hardwareModel : given.systemVersion) =
            word.substr(word.find('=') + 1);
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
void generations(World& world, const Words& words) {
    sayAnswers(world, words, [&](const std::string& version) {
        const auto found = systemVersionForProductVersion(version);
        return found ? fmt::format("{}", found->foundationVersion) : "none";
    });
}

/// What stored choices say of a key.
std::string choiceAt(const UserDefaults& values, const std::string& key) {
    const auto object = values.objectForKey(key);
    return (object ? scenarios::textOf(*object) : "none") + (values.stringForKey(key) ? " as string" : "") +
           (values.arrayForKey(key) ? " as array" : "") +
           (values.dictionaryForKey(key) ? " as dictionary" : "");
}

/// The stored choices of a process: "defaults one set {…}", "… remove a", "… get a b", "… true a b" (which of
/// them are), "… save".
void defaults(World& world, const Words& words) {
    world.device();
    using Processes = std::map<std::string, std::shared_ptr<Device>>;
    auto& device = world.kept<Processes>([] { return Processes(); })[words.at(0)];
    if (!device) {
        device = Device::open(world.folder.folder()).value();
        device->warnings().setReceiver([&world](const auto& line) { world.sayWarning(line); });
    }
    UserDefaults& values = device->standardUserDefaults();
    const Words keys(words.begin() + 2, words.end());
    if (words.at(1) == "get") {
        sayAnswers(world, keys, [&](const auto& key) { return choiceAt(values, key); });
    } else if (words[1] == "true") {
        const auto isTrue = [&](const auto& key) { return values.boolForKey(key); };
        world.say(fmt::format("{}", fmt::join(keys | std::views::filter(isTrue), " ")));
    } else if (words[1] == "save") {
        sayAnswers(world, {""}, [&](const auto&) { return answerOf(values.synchronize()); });
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
        return answerOf(value);
    }
    const bool stays = std::ranges::all_of(
        std::array{PropertyListFormat::xml, PropertyListFormat::binary},
        [&](auto format) { return parsePropertyList(serializePropertyList(*value, format)) == *value; });
    return scenarios::textOf(*value) + (stays ? "" : " changes when it is written");
}

/// The values of property lists.
void parse(World& world, const Words& words) {
    sayAnswers(world, words, [&](const auto& word) { return parsed(textNamed(world, word)); });
}

/// The same, with the XML around them.
void xml(World& world, const Words& words) {
    sayAnswers(world, words, [&](const auto& word) { return parsed(tests::xml(textNamed(world, word))); });
}

/// The pairs of ".strings" files, or the lines that are wrong.
void strings(World& world, const Words& words) {
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
void encoded(World& world, const Words& words) {
    const std::string text = textNamed(world, words.at(1));
    std::map<Lines, Words> encodingsBySaid;
    for (const char* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        for (const char* mark : {"\uFEFF", ""}) {
            if (mark[0] != '\0' || !std::string_view(encoding).starts_with("UTF-32")) {
                Verbs::named(words[0])(world, {tests::encoded(mark + text, encoding)});
                encodingsBySaid[world.takeOutput()].emplace_back(encoding);
            }
        }
    }
    for (const auto& [said, encodings] : encodingsBySaid) {
        if (encodingsBySaid.size() > 1) {
            world.say(fmt::format("{}:", fmt::join(encodings, ", ")));
        }
        for (const auto& line : said) {
            world.say(line.substr(2));
        }
    }
}

const Verbs verbs{
    {"show", show},
    {"reopen", reopen},
    {"files", [](World& world, const Words& words) { onPaths(world, words, 0, act); }},
    {"other", [](World& world, const Words& words) { onPaths(world, words, 1, act); }},
    {"paths", [](World& world, const Words& words) { onPaths(world, words, 0, actOnItem); }},
    {"other-items", [](World& world, const Words& words) { onPaths(world, words, 1, actOnItem); }},
    {"as", as},
    {"defaults", defaults},
    {"parse", parse},
    {"xml", xml},
    {"strings", strings},
    {"encoded", encoded},
    {"tools", tools},
    {"facts", facts},
    {"generations", generations}};

} // namespace

} // namespace scenarios
