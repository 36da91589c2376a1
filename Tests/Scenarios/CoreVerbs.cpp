// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/Removal/CustomFiles.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/LogReader.h"
#include "Tests/Support/StandardOutput.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace scenarios {

namespace {

template <OZAction action>
void remove(World& world, const Words& /*words*/, Analyze analyze) {
    world.builder().core().remove(action, analyze);
}

/// Each word is a path.
template <void (CleanupRun::*primitive)(const CleanupRun::Paths&)>
void perform(World& world, const Words& words, Analyze /*analyze*/) {
    (world.builder().core().run().*primitive)(words);
}

const Actions actions{{"remove3xImages", remove<OZAction::remove3xImages>},
                      {"remove2xImages", remove<OZAction::remove2xImages>},
                      {"remove1xImages", remove<OZAction::remove1xImages>},
                      {"removeiPadImages", remove<OZAction::removeiPadImages>},
                      {"remove4InchImages", remove<OZAction::remove4InchImages>},
                      {"removeiTunesArtwork", remove<OZAction::removeiTunesArtwork>},
                      {"removeLanguages", remove<OZAction::removeLanguages>},
                      {"removeKeyboards", remove<OZAction::removeKeyboards>},
                      {"removeVoiceControlLanguages", remove<OZAction::removeVoiceControlLanguages>},
                      {"del", perform<&CleanupRun::del>},
                      {"delr", perform<&CleanupRun::delr>},
                      {"quickDel", perform<&CleanupRun::quickDel>},
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
    cleanCustomFile(world.builder().core().run(), record);
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
    const auto found = world.builder().core().run().find(words);
    for (const auto& name : found.names) {
        paths.push_back(found.prefix + name);
    }
    sayAll(world, paths);
}

/// Stores all choices.
void save(World& world, const Words& /*words*/) {
    if (world.builder().core(); !world.device().standardUserDefaults().synchronize()) {
        world.say("not stored");
    }
}

const Verbs verbs{
    {"shown", shown}, {"withoutTools", withoutTools}, {"custom", custom}, {"find", find}, {"save", save}};

} // namespace

} // namespace scenarios
