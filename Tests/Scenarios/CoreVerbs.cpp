// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Model/Core/CustomFileRecordStorage.h"
#include "Model/Core/MessageDatabase.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/Removal/CustomFiles.h"
#include "Platform/Device/HostOutput.h"
#include "Tests/Scenarios/Verbs.h"
#include "Tests/Support/Engine.h"

#include <sqlite3.h>

namespace scenarios {

static OZCore& coreOf(World& world) {
    return world.builder().core();
}

static void sayList(World& world, const auto& list) {
    world.say(escaped(joined(list, "nothing")));
}

/// Patterns of names such as "start=log", and words without a "=" as they are.
struct Filter {
    explicit Filter(const Words& words) {
        for (const std::string_view word : words) {
            const size_t equals = std::min(word.find('='), word.size());
            patterns[word.substr(0, equals)].push_back(word.substr(std::min(equals + 1, word.size())));
        }
    }
    bool has(std::string_view kind) { return patterns.contains(kind); }
    template <class Text = std::string_view>
    std::optional<Text> first(std::string_view kind) {
        return has(kind) ? std::optional(Text(patterns[kind][0])) : std::nullopt;
    }
    NamePatterns all() { return {patterns["exact"], patterns["start"], patterns["middle"], patterns["end"]}; }

    std::map<std::string_view, std::vector<std::string_view>> patterns;
};

static platform::Dictionary stepsNamed(const Words& words) {
    platform::Dictionary settings;
    for (const auto& word : words) {
        settings[word] = true;
    }
    return settings;
}

static void sayState(World& world) {
    const OZCore& core = coreOf(world);
    world.say(fmt::format("{} items, {}, {}", core.fileCount(), core.freedSpaceString().value_or("no size"),
                          core.isRunning() ? "running" : "idle"));
}

/// "remove WHAT" is a removal; "in DIRECTORY PRIMITIVE…" nothing where there is no such directory. A
/// primitive has its paths, or a folder and what stands in a Filter; "files" where folders stay.
void perform(World& world, const Words& words, Analyze analyze) {
    auto& run = coreOf(world).run();
    const std::string_view name = words[0];
    const Words paths = rest(words);
    const std::string& place = paths.at(0);
    if (name == "remove") {
        constexpr std::string_view names[] = {
            "", "nothing", "3xImages",  "2xImages",  "1xImages", "iPadImages", "4InchImages", "iTunesArtwork",
            "", "",        "languages", "keyboards", "voices"};
        const auto* action = std::ranges::find(names, place);
        return coreOf(world).remove(static_cast<OZAction>(action - std::begin(names)), analyze);
    }
    if (name == "in") {
        return run.changeDir(place) ? perform(world, rest(paths), analyze) : void();
    }
    const Words conditions = rest(paths);
    Filter filter(conditions);
    const auto onlyFiles = filter.has("files") ? OnlyFiles::yes : OnlyFiles::no;
    name == "del"                 ? run.del(paths)
    : name == "delr"              ? run.delr(paths)
    : name == "quickDel"          ? run.quickDel(paths)
    : name == "quickDelLang"      ? run.quickDelLang(paths)
    : name == "quickDelFound"     ? run.quickDel(run.tree().directEntries("/")->withNames(paths))
    : name == "findAndDel"        ? run.quickDel(run.find(paths))
    : name == "delFolderContents" ? run.delFolderContents(place, onlyFiles)
    : name == "delEmptyDirs"      ? run.delEmptyDirs(place)
    : name == "delExcept"         ? run.delFilesExcludingPatternsRecursive(place, filter.all())
    : name == "delWithPatterns"   ? run.delWithPatterns(place, filter.all(), onlyFiles)
    : name == "delWithPattern"    ? run.delWithPattern(place, filter.first("start"), filter.first("middle"),
                                                       filter.first("end"), onlyFiles)
                                  : throw std::runtime_error("nothing that runs: " + words[0]);
}

/// What a cleanup by these steps shows on a terminal, in one line without colours and dashes.
VERB("shown") {
    const auto file = world.folder.folder() / ".shown";
    const auto settings = stepsNamed(words);
    coreOf(world).setCommandLineOutputEnabled(true);
    {
        const tests::StandardOutput output(file);
        coreOf(world).clean(&settings, Analyze::no);
    }
    coreOf(world).setCommandLineOutputEnabled(false);
    auto lines = linesOf(tests::contentOf(file));
    std::erase_if(lines, [](const auto& line) { return line.empty() || line.contains("----"); });
    sayList(world, lines);
}

/// A cleanup by these steps on the same tree without any tools.
VERB("withoutTools") {
    platform::Device bare(world.device().fileManager(), world.device().facts(), {});
    bare.warnings().setReceiver([&](const auto& line) { world.say(line); });
    OZModelBuilder builder(bare);
    const auto settings = stepsNamed(words);
    builder.core().clean(&settings, Analyze::no);
    world.say(
        fmt::format("{} steps, {} items", builder.core().cleanupStepCount(), builder.core().fileCount()));
    world.print(world.folder.contents(OZCleanupLogger::logFilePath));
}

/// What a record of the user's files takes: "PATH file|whole|content|files|unknown [deep] [start=…]
/// [middle=…] [end=…]". All of it is put back.
VERB("custom") {
    using enum OZCustomFolderSetting;
    Filter filter(words);
    const CustomFileRecord record{.filePath = words[0],
                                  .fileType = filter.has("file") ? CustomFileRecord::regularType
                                                                 : CustomFileRecord::directoryType,
                                  .customFolderSetting = filter.has("content")   ? filesAndSubfolders
                                                         : filter.has("files")   ? onlyFiles
                                                         : filter.has("unknown") ? unknown
                                                                                 : whole,
                                  .recursive = filter.has("deep"),
                                  .startPattern = filter.first<std::string>("start"),
                                  .middlePattern = filter.first<std::string>("middle"),
                                  .endPattern = filter.first<std::string>("end")};
    world.shell("rm -rf saved; cp -a Root saved");
    world.takeEffects();
    cleanCustomFile(coreOf(world).run(), record);
    Lines gone = world.takeEffects();
    for (auto& line : gone) {
        line.erase(0, line.starts_with("- ") ? 2 : 0);
    }
    world.shell("cp -a saved/. Root");
    world.takeEffects();
    sayList(world, gone);
}

/// What a search gives.
VERB("find") {
    sayList(world, coreOf(world).run().find(words).names);
}

/// What the engine tells of its last run.
VERB("state") {
    sayState(world);
}

VERB("reset") {
    coreOf(world).resetState();
    sayState(world);
}

VERB("restoreBackups") {
    coreOf(world).backup(BackupAction::restore);
    sayState(world);
}

VERB("removeBackups") {
    coreOf(world).backup(BackupAction::remove);
    sayState(world);
}

/// Writes texts to a log that is opened for direct or gathered writing, or not at all, and shows it before it
/// is closed and after.
VERB("log") {
    OZCleanupLogger logger(world.device());
    if (words.at(0) != "closed") {
        logger.deleteLogFile();
        logger.openLogFileForWriting(words[0] == "direct" ? platform::FileWriting::direct
                                                          : platform::FileWriting::gathered);
    }
    std::ranges::for_each(rest(words), [&](const auto& text) { logger.log(text); });
    sayList(world, linesOf(world.folder.contents(OZCleanupLogger::logFilePath)));
    logger.closeLogFile();
    sayList(world, linesOf(world.folder.contents(OZCleanupLogger::logFilePath)));
}

/// Has the logs of the runs go to a file of the host, too.
VERB("hostLog") {
    const int root = world.device().fileManager().rootDescriptor();
    auto output = platform::HostOutput::open(world.folder.folder() / words.at(0), root);
    coreOf(world).cleanupLogger()->setHostOutput(std::move(output.value()));
}

/// An engine with the languages of "Resources" in the device folder, or with the program's, does one thing
/// after the other: table=TEXT, use=NAME, choose=NAME,NAME, "inUse=NAME NAME", list, own, forms, codes,
/// analysis, test, clean, restore.
VERB("chosen") {
    const auto resources = world.folder.folder() / "Resources";
    const platform::Bundle bundle(std::filesystem::exists(resources) ? resources
                                                                     : platform::Bundle().directory());
    tests::Engine engine(world.device(), bundle);
    auto& choices = engine.core.choices();
    for (const auto& word : words) {
        const auto [kind, value] = namedValue(word);
        if (kind == "table") {
            std::ofstream(resources / "lang") << value;
        } else if (kind == "use") {
            engine.languages.setUserLanguage(value);
        } else if (kind == "choose") {
            choices.removeAllLanguagesToRemove();
            for (const auto name : std::views::split(value, ',')) {
                choices.addLanguageToRemove(std::string_view(name));
            }
        } else if (kind == "inUse") {
            const Words names = wordsOf(value);
            choices.removeLanguagesInUse(names);
            sayList(world, choices.languagesToRemove());
        } else if (kind == "list" || kind == "own") {
            sayList(world, kind == "own" ? engine.languages.languageNames() : choices.removableLanguages());
        } else if (kind == "forms" || kind == "codes") {
            sayList(world, choices.languageRegexComponentsShort(kind == "codes"));
        } else {
            choices.setTestMode(kind == "test");
            kind == "restore" ? engine.core.backup(BackupAction::restore)
                              : engine.core.remove(OZAction::removeLanguages,
                                                   kind == "analysis" ? Analyze::yes : Analyze::no);
            world.say(fmt::format("{} items", engine.core.fileCount()));
        }
    }
}

/// The folders that a table of the message database knows, in its order.
VERB("attachments") {
    // A database reads by a file system of its own; SQLite is not to keep it when both are gone.
    const auto* const others = sqlite3_vfs_find(nullptr)->pNext;
    const auto folders = MessageDatabase(world.device().fileManager(), words.at(0)).attachmentFolders();
    world.say(!folders ? "unreadable" : fmt::format("{}: {}", folders->size(), joined(*folders)));
    if (sqlite3_vfs_find(nullptr)->pNext != others) {
        world.say("a file system stays");
    }
}

/// All choices as they are.
VERB("choices") {
    const auto& choices = coreOf(world).choices();
    std::string on = "on:";
    for (const auto key : choices.enabledCleanupStepKeys()) {
        on += fmt::format(" {}={}", key, textOf(choices.cleanupSettings().find(key)->second));
    }
    world.say(fmt::format("{} of {}", on, choices.cleanupSettings().size()));
    world.say(fmt::format("types: {}, languages: {}, test mode: {}", joined(choices.fileTypes()),
                          joined(choices.languagesToRemove()), choices.testMode()));
    for (const auto& record : choices.customFiles()) {
        world.say(textOf(valueFromCustomFileRecord(record)));
    }
}

/// Chooses these file types.
VERB("types") {
    auto& choices = coreOf(world).choices();
    const bool isRefused = choices.setFileTypesExcludingIllegal(words);
    world.say(joined(choices.fileTypes()) + (isRefused ? ", some refused" : ""));
}

/// Edits the list of the user's files: add PATH, insert PATH INDEX, remove INDEX, copy FROM TO, lose INDEX
/// (puts an incomplete record there).
VERB("records") {
    auto& choices = coreOf(world).choices();
    const auto number = [&](size_t place) { return std::stoul(words.at(place)); };
    const CustomFileRecord record{.filePath = words.at(1), .fileType = CustomFileRecord::regularType};
    const std::string& kind = words[0];
    kind == "add"      ? choices.addCustomFile(record)
    : kind == "insert" ? choices.insertCustomFile(record, number(2))
    : kind == "remove" ? choices.removeCustomFile(number(1))
    : kind == "copy"   ? choices.replaceCustomFile(number(2), choices.customFiles().at(number(1)))
                       : choices.replaceCustomFile(number(1), {.filePath = "/incomplete"});
    sayList(world,
            choices.customFiles() | std::views::transform([](const auto& file) { return *file.filePath; }));
}

/// The front ends' language becomes another one.
VERB("speak") {
    coreOf(world);
    world.builder().localizationManager().setUserLanguage(words.at(0));
}

} // namespace scenarios
