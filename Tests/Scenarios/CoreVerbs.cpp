// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Model/Core/CustomFileRecordStorage.h"
#include "Model/Core/MessageDatabase.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/Removal/CustomFiles.h"
#include "Platform/Device/HostOutput.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Engine.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/StandardOutput.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ranges>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sqlite3.h>

namespace scenarios {

namespace {

OZCore& coreOf(World& world) {
    return world.builder().core();
}

Words rest(const Words& words, size_t count = 1) {
    return {words.begin() + static_cast<std::ptrdiff_t>(std::min(count, words.size())), words.end()};
}

void sayList(World& world, const auto& list) {
    world.say(std::ranges::empty(list) ? "nothing" : escaped(fmt::format("{}", fmt::join(list, " "))));
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

/// A primitive with its paths, or with a folder and what stands in a Filter; "files" where folders stay.
void perform(World& world, const Words& words, Analyze /*analyze*/) {
    auto& run = coreOf(world).run();
    const std::string_view name = words[0];
    const Words paths = rest(words);
    const std::string& place = paths.at(0);
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
                                  : run.delWithPattern(place, filter.first("start"), filter.first("middle"),
                                                       filter.first("end"), onlyFiles);
}

/// "in DIRECTORY PRIMITIVE…": nothing where there is no such directory.
void in(World& world, const Words& words, Analyze analyze) {
    if (coreOf(world).run().changeDir(words.at(1))) {
        perform(world, rest(words, 2), analyze);
    }
}

/// A removal, by its number.
void remove(World& world, const Words& words, Analyze analyze) {
    constexpr std::string_view names[] = {
        "", "nothing", "3xImages",  "2xImages",  "1xImages", "iPadImages", "4InchImages", "iTunesArtwork",
        "", "",        "languages", "keyboards", "voices"};
    const auto* name = std::ranges::find(names, words.at(1));
    coreOf(world).remove(static_cast<OZAction>(name - std::begin(names)), analyze);
}

const Actions actions{{"in", in},
                      {"del", perform},
                      {"delr", perform},
                      {"remove", remove},
                      {"quickDel", perform},
                      {"delExcept", perform},
                      {"findAndDel", perform},
                      {"delEmptyDirs", perform},
                      {"quickDelLang", perform},
                      {"quickDelFound", perform},
                      {"delWithPattern", perform},
                      {"delWithPatterns", perform},
                      {"delFolderContents", perform}};

platform::Dictionary stepsNamed(const Words& words) {
    platform::Dictionary settings;
    for (const auto& word : words) {
        settings[word] = true;
    }
    return settings;
}

/// What a cleanup by these steps shows on a terminal, in one line without colours and dashes.
void shown(World& world, const Words& words) {
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
void withoutTools(World& world, const Words& words) {
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
void custom(World& world, const Words& words) {
    using enum OZCustomFolderSetting;
    constexpr std::pair<const char*, OZCustomFolderSetting> settings[] = {
        {"content", filesAndSubfolders}, {"files", onlyFiles}, {"unknown", unknown}};
    Filter filter(words);
    CustomFileRecord record{.filePath = words[0],
                            .fileType = filter.has("file") ? CustomFileRecord::regularType
                                                           : CustomFileRecord::directoryType,
                            .recursive = filter.has("deep"),
                            .startPattern = filter.first<std::string>("start"),
                            .middlePattern = filter.first<std::string>("middle"),
                            .endPattern = filter.first<std::string>("end")};
    for (const auto& [name, setting] : settings) {
        record.customFolderSetting = filter.has(name) ? setting : record.customFolderSetting;
    }
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
void find(World& world, const Words& words) {
    sayList(world, coreOf(world).run().find(words).names);
}

/// What the engine tells of its last run.
void state(World& world, const Words& /*words*/) {
    const OZCore& core = coreOf(world);
    world.say(fmt::format("{} items, {}, {}", core.fileCount(), core.freedSpaceString().value_or("no size"),
                          core.isRunning() ? "running" : "idle"));
}

void reset(World& world, const Words& words) {
    coreOf(world).resetState();
    state(world, words);
}

void restoreBackups(World& world, const Words& words) {
    coreOf(world).backup(BackupAction::restore);
    state(world, words);
}

void removeBackups(World& world, const Words& words) {
    coreOf(world).backup(BackupAction::remove);
    state(world, words);
}

/// Writes texts to a log that is opened for direct or gathered writing, or not at all, and shows it before it
/// is closed and after.
void log(World& world, const Words& words) {
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
void hostLog(World& world, const Words& words) {
    const int root = world.device().fileManager().rootDescriptor();
    auto output = platform::HostOutput::open(world.folder.folder() / words.at(0), root);
    coreOf(world).cleanupLogger()->setHostOutput(std::move(output.value()));
}

/// An engine with the languages of "Resources" in the device folder, or with the program's, does one thing
/// after the other: table=TEXT, use=NAME, choose=NAME,NAME, "inUse=NAME NAME", list, own, forms, codes,
/// analysis, test, clean, restore.
void chosen(World& world, const Words& words) {
    const auto resources = world.folder.folder() / "Resources";
    const platform::Bundle bundle(std::filesystem::exists(resources) ? resources
                                                                     : platform::Bundle().directory());
    tests::Engine engine(world.device(), bundle);
    auto& choices = engine.core.choices();
    for (const auto& word : words) {
        const size_t equals = std::min(word.find('='), word.size());
        const auto kind = word.substr(0, equals);
        const auto value = word.substr(std::min(equals + 1, word.size()));
        if (kind == "table") {
            std::ofstream(resources / "lang") << value;
        } else if (kind == "use") {
            engine.languages.setUserLanguage(value);
        } else if (kind == "choose") {
            choices.removeAllLanguagesToRemove();
            auto names = std::views::split(value, ',');
            std::ranges::for_each(names,
                                  [&](auto name) { choices.addLanguageToRemove(std::string_view(name)); });
        } else if (kind == "inUse") {
            const Words names = wordsOf(value);
            choices.removeLanguagesInUse(names);
            sayList(world, choices.languagesToRemove());
        } else if (kind == "list" || kind == "own") {
            sayList(world, kind == "own" ? engine.languages.languageNames() : choices.removableLanguages());
        } else if (kind == "forms" || kind == "codes") {
            sayList(world, choices.languageRegexComponentsShort(kind == "codes"));
        } else if (kind == "restore") {
            engine.core.backup(BackupAction::restore);
            world.say(fmt::format("{} items", engine.core.fileCount()));
        } else {
            choices.setTestMode(kind == "test");
            engine.core.remove(OZAction::removeLanguages, kind == "analysis" ? Analyze::yes : Analyze::no);
            world.say(fmt::format("{} items", engine.core.fileCount()));
        }
    }
}

/// The folders that a table of the message database knows, in its order.
void attachments(World& world, const Words& words) {
    // A database reads by a file system of its own; SQLite is not to keep it when both are gone.
    const auto* const others = sqlite3_vfs_find(nullptr)->pNext;
    const auto folders = MessageDatabase(world.device().fileManager(), words.at(0)).attachmentFolders();
    world.say(!folders ? "unreadable" : fmt::format("{}: {}", folders->size(), fmt::join(*folders, " ")));
    if (sqlite3_vfs_find(nullptr)->pNext != others) {
        world.say("a file system stays");
    }
}

/// All choices as they are.
void choices(World& world, const Words& /*words*/) {
    const auto& choices = coreOf(world).choices();
    std::string on = "on:";
    for (const auto key : choices.enabledCleanupStepKeys()) {
        on += fmt::format(" {}={}", key, textOf(choices.cleanupSettings().find(key)->second));
    }
    world.say(fmt::format("{} of {}", on, choices.cleanupSettings().size()));
    world.say(fmt::format("types: {}, languages: {}, test mode: {}", fmt::join(choices.fileTypes(), " "),
                          fmt::join(choices.languagesToRemove(), " "), choices.testMode()));
    for (const auto& record : choices.customFiles()) {
        world.say(textOf(valueFromCustomFileRecord(record)));
    }
}

/// Chooses these file types.
void types(World& world, const Words& words) {
    auto& choices = coreOf(world).choices();
    const bool isRefused = choices.setFileTypesExcludingIllegal(words);
    world.say(fmt::format("{}{}", fmt::join(choices.fileTypes(), " "), isRefused ? ", some refused" : ""));
}

/// Edits the list of the user's files: add PATH, insert PATH INDEX, remove INDEX, copy FROM TO, lose INDEX
/// (puts an incomplete record there).
void records(World& world, const Words& words) {
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
void speak(World& world, const Words& words) {
    coreOf(world);
    world.builder().localizationManager().setUserLanguage(words.at(0));
}

const Verbs verbs{{"log", log},
                  {"find", find},
                  {"reset", reset},
                  {"shown", shown},
                  {"speak", speak},
                  {"state", state},
                  {"types", types},
                  {"chosen", chosen},
                  {"custom", custom},
                  {"choices", choices},
                  {"hostLog", hostLog},
                  {"records", records},
                  {"attachments", attachments},
                  {"withoutTools", withoutTools},
                  {"removeBackups", removeBackups},
                  {"restoreBackups", restoreBackups}};

} // namespace

} // namespace scenarios
