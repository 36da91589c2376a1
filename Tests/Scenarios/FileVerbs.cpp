// What scenarios can do with items of the tree by way of the file manager.

#include "Categories/Files.h"
#include "Platform/Files/FileManager.h"
#include "Tests/Scenarios/Verbs.h"

#include <grp.h>
#include <sys/resource.h>
#include <sys/xattr.h>

namespace scenarios::file {

using namespace platform;

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
    return joined(names);
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

using Acts = std::map<std::string, std::function<std::string()>>;

/// Does something with a path by a file manager's operations. An argument stands behind "=".
std::string act(FileManager& files, const std::string& name, const std::string& path, const std::string& to) {
    const auto number = [&](int base) { return static_cast<uint32_t>(std::stoul(to, nullptr, base)); };
    const auto folder = [&](auto kind) { return answerOf(files.createDirectoryAtPath(path, kind)); };
    const auto traverse = to == "target" ? TraverseLinks::yes : TraverseLinks::no;
    const std::string owner = to.substr(0, to.find(':'));
    const std::string group = to.substr(to.find(':') + 1);
    const auto named = [](const auto& text) { return text.empty() ? std::nullopt : std::optional(text); };
    const Acts acts = {
        {"append", [&] { return writeTo(files.openForWriting(path), to); }},
        {"cd", [&] { return answerOf(files.changeCurrentDirectoryPath(path)); }},
        {"clear", [&] { return answerOf(removeItemAtPath(files, path, traverse)); }},
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
        {"give", [&] { return answerOf(setOwnerOfItemAtPath(files, path, named(owner), named(group))); }},
        {"item", [&] { return answerOf(files.itemAtPath(path)); }},
        {"link", [&] { return answerOf(files.createSymbolicLinkAtPath(path, to)); }},
        {"list", [&] { return answerOf(files.contentsOfDirectoryAtPath(path)); }},
        {"lookOnly", [&] { return answerOf(files.lookOnly()); }},
        {"mkdir", [&] { return folder(IntermediateFolders::refuse); }},
        {"mkdirs", [&] { return folder(IntermediateFolders::create); }},
        {"mode", [&] { return answerOf(files.setPermissionsOfItemAtPath(path, number(8))); }},
        {"move", [&] { return answerOf(files.moveItemAtPath(path, to)); }},
        {"own", [&] { return answerOf(files.setOwnerOfItemAtPath(path, number(10), std::nullopt)); }},
        {"read",
         [&] {
             return answerOf(to.empty() ? files.contentsAtPath(path)
                                        : files.contentsAtPath(path, number(10)));
         }},
        {"remove", [&] { return answerOf(files.removeItemAtPath(path)); }},
        {"resolve", [&] { return files.stringByResolvingSymlinksInPath(path); }},
        {"rewrite", [&] { return answerOf(files.writeContents(path, *files.contentsAtPath(path))); }},
        {"room", [&] { return answerOf(files.attributesOfFileSystemForPath(path)); }},
        {"stat", [&] { return answerOf(files.attributesOfItemAtPath(path)); }},
        {"target", [&] { return answerOf(files.attributesOfTargetAtPath(path)); }},
        {"there",
         [&] {
             bool isFolder = false;
             return !fileExistsAtPath(files, path, &isFolder, traverse) ? "nothing"
                    : isFolder                                          ? "folder"
                                                                        : "item";
         }},
        {"tools", [&] { return files.pathForTools(path); }},
        {"total", [&] { return std::to_string(sizeOfItemAtPath(files, path)); }},
        {"walk", [&] { return answerOf(files.enumeratorAtPath(path), to); }},
        {"writable", [&] { return files.isWritableFileAtPath(path) ? "yes" : "no"; }},
        {"write", [&] { return answerOf(files.writeContents(path, to)); }},
        {"writeOwned", [&] { return answerOf(files.writeContents(path, to, FileOwnership{})); }},
    };
    return acts.at(name)();
}

std::string removeFound(const Item& folder) {
    const auto walk = folder.enumerate();
    walk->nextObject();
    return answerOf(walk->item().remove());
}

/// The same with an item.
std::string act(const Item& item, const std::string& name, const std::string& to) {
    const Acts acts = {
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

/// The acts ("read,write=text") on each path, by the way of finding paths that a loop "paths" tells, in the
/// folder "device" of the tree, or as "let root" names it: what is beside it is out of bounds. The second
/// handle shares its root with the first.
void onPaths(World& world, const Words& words, size_t handle, bool isOnItems) {
    const auto variable = [&](const char* name, const char* usual) {
        return world.variables.contains(name) ? world.variables[name] : usual;
    };
    auto& handles = world.kept<std::vector<FileManager>>([&] {
        const auto way =
            variable("paths", "kernel") == "kernel" ? PathResolution::kernel : PathResolution::componentWise;
        const auto files = FileManager::atRoot(world.folder.hostPath(variable("root", "/device")), way);
        return std::vector<FileManager>(files ? 2 : 0, *files);
    });
    if (handles.empty()) {
        return world.say("no root");
    }
    const auto answer = [&](const std::string& path, const std::string& wish) {
        const auto [name, to] = namedValue(wish);
        if (!isOnItems) {
            return act(handles.at(handle), name, path, to);
        }
        const auto item = itemNamed(handles.at(handle), path);
        return item ? act(*item, name, to) : answerOf(item);
    };
    sayAnswers(world, rest(words), [&](const std::string& path) {
        Words answers;
        for (const auto wish : std::views::split(words[0], ',')) {
            answers.push_back(answer(path, std::string(wish.begin(), wish.end())));
        }
        const bool agree = std::ranges::adjacent_find(answers, std::not_equal_to()) == answers.end();
        return escaped(agree ? answers[0] : joined(answers, "", ", "));
    });
}

/// Notes an extended attribute on items, by their paths in the tree, and says what is noted.
VERB("note") {
    for (const auto& path : rest(words)) {
        ::setxattr(world.folder.hostPath(path).c_str(), "user.note", words[0].data(), words[0].size(), 0);
    }
}

VERB("noted") {
    sayAnswers(world, words, [&](const std::string& path) {
        char text[16];
        const ssize_t size = ::getxattr(world.folder.hostPath(path).c_str(), "user.note", text, sizeof text);
        return size < 0 ? "nothing" : '"' + escaped({text, static_cast<size_t>(size)}) + '"';
    });
}

/// Does an action in a process of its own: "as user=501 …", "as umask=63 …", "as fsize=1000 …" (files get no
/// larger).
VERB("as") {
    const auto number = static_cast<uid_t>(std::stoul(namedValue(words.at(0)).second));
    const std::string said = world.folder.folder() / "said";
    std::ofstream file(said);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{number, number};
        ::signal(SIGXFSZ, SIG_IGN);
        const bool became = words[0].starts_with("user")
                                ? ::setgroups(0, nullptr) == 0 && ::setresgid(number, number, number) == 0 &&
                                      ::setresuid(number, number, number) == 0
                            : words[0].starts_with("umask") ? ::umask(number) != number
                                                            : ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
        file << joined(became ? saidBy(world, words.at(1), rest(words, 2)) : Words{"no such process"}, "",
                       "\n")
             << std::flush;
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    std::ranges::for_each(linesOf(tests::contentOf(said)), [&](const auto& line) { world.say(line); });
}

template <size_t handle, bool isOnItems>
void on(World& world, const Words& words) {
    onPaths(world, words, handle, isOnItems);
}

const Verbs verbs{
    {"files", on<0, false>}, {"item", on<0, true>}, {"other", on<1, false>}, {"other-item", on<1, true>}};

} // namespace scenarios::file
