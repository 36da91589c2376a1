// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/CustomFileRecordStorage.h"
#include "Model/Core/MessageDatabase.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/Removal/CustomFiles.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/HostOutput.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/LogReader.h"
#include "Tests/Support/StandardOutput.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ranges>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace scenarios {

namespace {

CleanupRun& runOf(World& world) {
    return world.builder().core().run();
}

template <OZAction action>
void remove(World& world, const Words& /*words*/, Analyze analyze) {
    world.builder().core().remove(action, analyze);
}

/// Each word is a path.
template <void (CleanupRun::*primitive)(const CleanupRun::Paths&)>
void perform(World& world, const Words& words, Analyze /*analyze*/) {
    (runOf(world).*primitive)(words);
}

/// Each word is a path below the top that a search has found.
void quickDelFound(World& world, const Words& words, Analyze /*analyze*/) {
    runOf(world).quickDel(runOf(world).tree().directEntries("/")->withNames(words));
}

/// The words are those of a search.
void findAndDel(World& world, const Words& words, Analyze /*analyze*/) {
    runOf(world).quickDel(runOf(world).find(words));
}

/// What follows a folder: patterns such as "start=log", and "files" where folders stay.
struct Filter {
    using Patterns = std::vector<std::string_view>;

    explicit Filter(const Words& words) {
        for (const std::string_view word : words | std::views::drop(1)) {
            const size_t equals = std::min(word.find('='), word.size());
            const auto kind = word.substr(0, equals);
            onlyFiles = kind == "files" ? OnlyFiles::yes : onlyFiles;
            patterns[kind].push_back(word.substr(std::min(equals + 1, word.size())));
        }
    }
    std::optional<std::string_view> first(std::string_view kind) {
        return patterns.contains(kind) ? std::optional(patterns[kind][0]) : std::nullopt;
    }
    NamePatterns all() { return {patterns["exact"], patterns["start"], patterns["middle"], patterns["end"]}; }

    std::map<std::string_view, Patterns> patterns;
    OnlyFiles onlyFiles = OnlyFiles::no;
};

void delFolderContents(World& world, const Words& words, Analyze /*analyze*/) {
    runOf(world).delFolderContents(words.at(0), Filter(words).onlyFiles);
}

void delWithPattern(World& world, const Words& words, Analyze /*analyze*/) {
    Filter filter(words);
    runOf(world).delWithPattern(words.at(0), filter.first("start"), filter.first("middle"),
                                filter.first("end"), filter.onlyFiles);
}

void delWithPatterns(World& world, const Words& words, Analyze /*analyze*/) {
    Filter filter(words);
    runOf(world).delWithPatterns(words.at(0), filter.all(), filter.onlyFiles);
}

void delExcept(World& world, const Words& words, Analyze /*analyze*/) {
    runOf(world).delFilesExcludingPatternsRecursive(words.at(0), Filter(words).all());
}

void delEmptyDirs(World& world, const Words& words, Analyze /*analyze*/) {
    runOf(world).delEmptyDirs(words.at(0));
}

/// "DIRECTORY ACTION…": nothing where there is no such directory.
void in(World& world, const Words& words, Analyze analyze) {
    if (runOf(world).changeDir(words.at(0))) {
        Actions::named(words.at(1))(world, {words.begin() + 2, words.end()}, analyze);
    }
}

const Actions actions{{"remove3xImages", remove<OZAction::remove3xImages>},
                      {"remove2xImages", remove<OZAction::remove2xImages>},
                      {"remove1xImages", remove<OZAction::remove1xImages>},
                      {"removeiPadImages", remove<OZAction::removeiPadImages>},
                      {"remove4InchImages", remove<OZAction::remove4InchImages>},
                      {"removeiTunesArtwork", remove<OZAction::removeiTunesArtwork>},
                      {"removeNothing", remove<OZAction::clean>},
                      {"removeLanguages", remove<OZAction::removeLanguages>},
                      {"removeKeyboards", remove<OZAction::removeKeyboards>},
                      {"removeVoiceControlLanguages", remove<OZAction::removeVoiceControlLanguages>},
                      {"del", perform<&CleanupRun::del>},
                      {"delr", perform<&CleanupRun::delr>},
                      {"quickDel", perform<&CleanupRun::quickDel>},
                      {"quickDelFound", quickDelFound},
                      {"findAndDel", findAndDel},
                      {"delFolderContents", delFolderContents},
                      {"delWithPattern", delWithPattern},
                      {"delWithPatterns", delWithPatterns},
                      {"delExcept", delExcept},
                      {"delEmptyDirs", delEmptyDirs},
                      {"in", in},
                      {"quickDelLang", perform<&CleanupRun::quickDelLang>}};

platform::Dictionary stepsNamed(const Words& words) {
    platform::Dictionary settings;
    for (const auto& word : words) {
        settings[word] = true;
    }
    return settings;
}

/// What a cleanup by these steps shows on a terminal.
void shown(World& world, const Words& words) {
    OZCore& core = world.builder().core();
    const auto file = world.folder.folder() / ".shown";
    const auto settings = stepsNamed(words);
    core.setCommandLineOutputEnabled(true);
    {
        const tests::StandardOutput output(file);
        core.clean(&settings, Analyze::no);
    }
    core.setCommandLineOutputEnabled(false);
    for (const auto& line : linesOf(tests::contentOf(file))) {
        line.empty() ? void() : world.print(line);
    }
}

/// A cleanup by these steps on the same tree without any tools.
void withoutTools(World& world, const Words& words) {
    platform::Device bare(world.device().fileManager(), world.device().facts(), {});
    bare.warnings().setReceiver([&](const auto& line) { world.say(line); });
    OZModelBuilder builder(bare);
    const auto settings = stepsNamed(words);
    builder.core().clean(&settings, Analyze::no);
    world.print(
        fmt::format("{} steps, {} items", builder.core().cleanupStepCount(), builder.core().fileCount()));
    world.print(world.folder.contents(OZCleanupLogger::logFilePath));
}

/// The lines in order and in one, or "nothing".
void sayAll(World& world, Lines lines) {
    std::ranges::sort(lines);
    world.say(lines.empty() ? "nothing" : escaped(fmt::format("{}", fmt::join(lines, " "))));
}

/// What a record of the user's files takes: "PATH file|whole|content|files|unknown [deep] [start=…]
/// [middle=…] [end=…]". All of it is put back.
void custom(World& world, const Words& words) {
    using enum OZCustomFolderSetting;
    const std::map<std::string, OZCustomFolderSetting> settings{
        {"whole", whole}, {"content", filesAndSubfolders}, {"files", onlyFiles}, {"unknown", unknown}};
    CustomFileRecord record{.filePath = words.at(0), .fileType = CustomFileRecord::directoryType};
    if (words.at(1) == "file") {
        record.fileType = CustomFileRecord::regularType;
    } else {
        record.customFolderSetting = settings.at(words[1]);
    }
    for (const auto& word : words | std::views::drop(2)) {
        const std::string value = word.substr(word.find('=') + 1);
        (word == "deep"              ? void(record.recursive = true)
         : word.starts_with("start") ? void(record.startPattern = value)
         : word.starts_with("end")   ? void(record.endPattern = value)
                                     : void(record.middlePattern = value));
    }
    world.shell("rm -rf saved; cp -a Root saved");
    world.takeEffects();
    cleanCustomFile(runOf(world), record);
    Lines gone;
    for (const auto& line : world.takeEffects()) {
        gone.push_back(line.starts_with("- ") ? line.substr(2) : line);
    }
    world.shell("cp -a saved/. Root");
    world.takeEffects();
    sayAll(world, gone);
}

void find(World& world, const Words& words) {
    Lines paths;
    const auto found = runOf(world).find(words);
    for (const auto& name : found.names) {
        paths.push_back(found.prefix + name);
    }
    sayAll(world, paths);
}

/// What the engine tells of its last run.
void state(World& world, const Words& /*words*/) {
    const OZCore& core = world.builder().core();
    world.say(fmt::format("{} items, {}, {}", core.fileCount(), core.freedSpaceString().value_or("no size"),
                          core.isRunning() ? "running" : "idle"));
}

void reset(World& world, const Words& /*words*/) {
    world.builder().core().resetState();
}

void sayText(World& world, std::string_view text) {
    text.empty() ? world.say("nothing") : world.print(text);
}

/// Writes texts to the log, which is opened for direct or gathered writing, or not at all, and shows it
/// before it is closed and after.
void log(World& world, const Words& words) {
    OZCleanupLogger logger(world.device());
    if (words.at(0) != "closed") {
        logger.deleteLogFile();
        logger.openLogFileForWriting(words[0] == "direct" ? platform::FileWriting::direct
                                                          : platform::FileWriting::gathered);
    }
    for (const auto& text : words | std::views::drop(1)) {
        logger.log(text);
    }
    sayText(world, world.folder.contents(OZCleanupLogger::logFilePath));
    logger.closeLogFile();
    sayText(world, world.folder.contents(OZCleanupLogger::logFilePath));
}

/// Has the logs of the runs go to a file of the host, too.
void hostLog(World& world, const Words& words) {
    world.builder().core().cleanupLogger()->setHostOutput(
        platform::HostOutput::open(world.folder.folder() / words.at(0),
                                   world.device().fileManager().rootDescriptor())
            .value());
}

template <BackupAction action>
void backup(World& world, const Words& words) {
    world.builder().core().backup(action);
    state(world, words);
}

/// An engine with the languages of "Resources" in the device folder, or with the program's, does one thing
/// after the other: table=TEXT, use=NAME, choose=NAME,NAME, "inUse=NAME NAME", list, forms, codes, analysis,
/// test, clean, restore.
void chosen(World& world, const Words& words) {
    const auto resources = world.folder.folder() / "Resources";
    const platform::Bundle bundle(std::filesystem::exists(resources) ? resources
                                                                     : platform::Bundle().directory());
    auto& device = world.device();
    OZLocalizationManager manager(device, device.standardUserDefaults(), bundle);
    OZCore core(device, world.builder().appList(), manager);
    core.setCleanupLogger(world.builder().cleanupLogger());
    const auto list = [&](const Lines& names) {
        world.say(names.empty() ? "nothing" : fmt::format("{}", fmt::join(names, " ")));
    };
    for (const auto& word : words) {
        const std::string value = word.substr(word.find('=') + 1);
        if (word.starts_with("table=")) {
            std::ofstream(resources / "lang") << value;
        } else if (word.starts_with("use=")) {
            manager.setUserLanguage(value);
        } else if (word.starts_with("choose=")) {
            auto names = std::views::split(value, ',');
            core.choices().removeAllLanguagesToRemove();
            for (const auto name : names) {
                core.choices().addLanguageToRemove(std::string_view(name));
            }
        } else if (word.starts_with("inUse=")) {
            const Words names = wordsOf(value);
            core.choices().removeLanguagesInUse(names);
            list({core.choices().languagesToRemove().begin(), core.choices().languagesToRemove().end()});
        } else if (word == "list") {
            list(core.choices().removableLanguages());
        } else if (word == "own") {
            list(manager.languageNames());
        } else if (word == "forms" || word == "codes") {
            list(core.choices().languageRegexComponentsShort(word == "codes"));
        } else {
            core.choices().setTestMode(word == "test");
            word == "restore"
                ? core.backup(BackupAction::restore)
                : core.remove(OZAction::removeLanguages, word == "analysis" ? Analyze::yes : Analyze::no);
            world.say(fmt::format("{} items", core.fileCount()));
        }
    }
}

/// The folders that a table of the message database knows, in its order.
void attachments(World& world, const Words& words) {
    const auto folders = MessageDatabase(world.device().fileManager(), words.at(0)).attachmentFolders();
    world.say(!folders ? "unreadable" : fmt::format("{}: {}", folders->size(), fmt::join(*folders, " ")));
}

/// All choices as they are.
void choices(World& world, const Words& /*words*/) {
    const auto& choices = world.builder().core().choices();
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
    auto& choices = world.builder().core().choices();
    const bool isRefused = choices.setFileTypesExcludingIllegal(words);
    world.say(fmt::format("{}{}", fmt::join(choices.fileTypes(), " "), isRefused ? ", some refused" : ""));
}

/// Edits the list of the user's files: add PATH, insert PATH INDEX, remove INDEX, copy FROM TO, lose INDEX
/// (puts an incomplete record there).
void records(World& world, const Words& words) {
    auto& choices = world.builder().core().choices();
    const auto number = [&](size_t place) { return std::stoul(words.at(place)); };
    const std::string& kind = words.at(0);
    const auto record = [](const std::string& path) {
        return CustomFileRecord{.filePath = path, .fileType = CustomFileRecord::regularType};
    };
    kind == "add"      ? choices.addCustomFile(record(words.at(1)))
    : kind == "insert" ? choices.insertCustomFile(record(words.at(1)), number(2))
    : kind == "remove" ? choices.removeCustomFile(number(1))
    : kind == "copy"   ? choices.replaceCustomFile(number(2), choices.customFiles().at(number(1)))
                       : choices.replaceCustomFile(number(1), {.filePath = "/incomplete"});
    Lines paths;
    for (const auto& known : choices.customFiles()) {
        paths.push_back(*known.filePath);
    }
    world.say(fmt::format("{}", fmt::join(paths, " ")));
}

/// The front ends' language becomes another one.
void speak(World& world, const Words& words) {
    world.builder().core();
    world.builder().localizationManager().setUserLanguage(words.at(0));
}

const Verbs verbs{{"shown", shown},
                  {"withoutTools", withoutTools},
                  {"custom", custom},
                  {"find", find},
                  {"choices", choices},
                  {"attachments", attachments},
                  {"types", types},
                  {"records", records},
                  {"speak", speak},
                  {"state", state},
                  {"reset", reset},
                  {"log", log},
                  {"hostLog", hostLog},
                  {"restoreBackups", backup<BackupAction::restore>},
                  {"removeBackups", backup<BackupAction::remove>},
                  {"chosen", chosen}};

} // namespace

} // namespace scenarios
