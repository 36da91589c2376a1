// A run of cleanup steps, of which its scenario says beforehand what goes.

#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/LogReader.h"
#include "Tests/Support/StandardOutput.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <fmt/format.h>

namespace scenarios {

namespace {

using tests::TreeSnapshot;

enum class Mode { analysis, test, clean };

Mode modeOf(const std::string& word) {
    for (const auto& [name, mode] :
         {std::pair("analysis", Mode::analysis), {"test", Mode::test}, {"clean", Mode::clean}}) {
        if (word == name) {
            return mode;
        }
    }
    throw std::runtime_error("no mode: " + word);
}

/// Where a path is in a tree whose items went, or got their backup names.
bool isGone(const std::set<std::string>& gone, const std::string& path) {
    return std::ranges::any_of(gone, [&](const auto& top) { return path == top || isBelow(path, top); });
}

TreeSnapshot treeAfter(Mode mode, const TreeSnapshot& before, const std::set<std::string>& gone) {
    TreeSnapshot after;
    for (const auto& [path, state] : before) {
        const auto top =
            std::ranges::find_if(gone, [&](const auto& item) { return path == item || isBelow(path, item); });
        if (mode == Mode::analysis || top == gone.end()) {
            after[path] = state;
        } else if (mode == Mode::test) {
            after[*top + ".OzvarineBackup" + path.substr(top->size())] = state;
        }
    }
    return after;
}

/// The log behind its summary and the step's heading.
std::string bodyOf(const std::string& log) {
    const size_t heading = log.find("##\n\n", log.find('\n', log.find(" size: ")));
    return heading == std::string::npos ? log : log.substr(heading + 4);
}

/// Whether the texts stand in the log one behind the other.
bool isInOrder(const std::string& log, const Words& texts) {
    size_t at = 0;
    for (const auto& text : texts) {
        at = log.find(text, at);
        if (at == std::string::npos) {
            return false;
        }
        at += text.size();
    }
    return true;
}

/// What a run left behind.
struct Outcome {
    TreeSnapshot before;
    std::string log;
    Lines effects;
    Lines asked;
    uint64_t files = 0;
    uint64_t freed = 0;
};

/// The log names what goes, and the record counts what the log names, unless a line says something else.
std::string wrongRecord(const Outcome& outcome, Mode mode, const std::set<std::string>& gone,
                        const Lines& expected) {
    const auto says = [&](std::string_view word) {
        return std::ranges::any_of(expected, [&](const auto& line) { return line.starts_with(word); });
    };
    std::string wrong;
    auto named = tests::itemsNamedByLog(outcome.log, outcome.before);
    if (!says("count ") && !says("named …") && named.size() != outcome.files) {
        wrong += fmt::format("the log names {} items, {} are counted\n", named.size(), outcome.files);
    }
    if (mode != Mode::test && !says("named ")) {
        // What could not go is listed below the log.
        const std::string end =
            outcome.log.substr(std::min(outcome.log.find("\nItems that stayed\n"), outcome.log.size()));
        std::erase_if(named, [&](const auto& path) { return end.contains(": /" + path + "\n"); });
        std::ranges::sort(named);
        named.erase(std::ranges::unique(named).begin(), named.end());
        Lines wanted;
        for (const auto& [path, state] : outcome.before) {
            if (says("whole") ? gone.contains(path) : isGone(gone, path)) {
                wanted.push_back(path);
            }
        }
        wrong += wanted == named ? "" : "named by the log:\n" + difference(wanted, named);
    }
    return wrong;
}

std::string wrongLine(const Outcome& outcome, std::string_view line) {
    const std::string whole(line);
    const std::string kind = takeWord(line);
    const auto number = [&] { return std::stoull(std::string(line)); };
    const std::string body = bodyOf(outcome.log);
    const bool holds =
        kind == "count"   ? number() == outcome.files
        : kind == "freed" ? number() == outcome.freed
        : kind == "log"   ? isInOrder(body, wordsOf(line))
        : kind == "whole" ? true
        : kind == "nolog" ? !body.contains(wordsOf(line).at(0))
        : kind == "named"
            ? line == "…" || wordsOf(line) == tests::itemsNamedByLog(outcome.log, outcome.before)
            : throw std::runtime_error("unknown: " + whole);
    return holds ? ""
                 : fmt::format("not so: {} ({} files, {} bytes, log:\n{})\n", whole, outcome.files,
                               outcome.freed, body);
}

} // namespace

bool isExpectationOfRun(std::string_view line) {
    const std::string kind = takeWord(line);
    return kind == "count" || kind == "freed" || kind == "log" || kind == "nolog" || kind == "named" ||
           kind == "whole";
}

std::string runSteps(World& world, std::string_view words, const Lines& expected) {
    Words steps = wordsOf(words);
    const Action action = Actions::named(steps.at(0));
    Mode mode = Mode::clean;
    if (steps.size() > 2 && *(steps.end() - 2) == "in") {
        mode = modeOf(steps.back());
        steps.resize(steps.size() - 2);
    }
    for (const auto& step : action == nullptr ? steps : Words{}) {
        const size_t equals = std::min(step.find('='), step.size());
        world.settings[step.substr(0, equals)] =
            uint64_t{equals < step.size() ? std::stoull(step.substr(equals + 1)) : 1};
    }
    // The log needs its place.
    std::error_code error;
    std::filesystem::create_directories(world.folder.hostPath("/var/mobile/Library"), error);
    OZCore& core = world.builder().core();
    Outcome outcome{.before = world.tree()};
    world.takeEffects();
    {
        const tests::StandardOutput nowhere("/dev/null");
        core.choices().setTestMode(mode == Mode::test);
        const auto analyze = mode == Mode::analysis ? Analyze::yes : Analyze::no;
        core.clean(&world.settings, analyze);
        if (action != nullptr) {
            core.cleanupLogger()->deleteLogFile();
            action(world, steps, analyze);
        }
    }
    outcome.log = world.folder.contents(OZCleanupLogger::logFilePath);
    outcome.asked = world.takeJournal();
    outcome.files = core.fileCount();
    outcome.freed = core.freedSpace();

    // Lines with marks tell where a run does something else than taking what is said to go.
    TreeSnapshot wanted = treeAfter(mode, outcome.before, world.gone());
    Lines effects = world.takeOutput();
    std::ranges::copy(effectsOn(wanted, world.tree()), std::back_inserter(effects));
    for (const auto& line : outcome.asked) {
        effects.push_back("! " + line);
    }
    Lines marked;
    std::string wrong;
    for (const auto& line : expected) {
        if (line.starts_with('|')) {
            continue;
        }
        isExpectationOfRun(line) ? void(wrong += wrongLine(outcome, line)) : marked.push_back(line);
    }
    if (!matches(marked, effects)) {
        wrong += "beside what goes:\n" + difference(marked, effects);
    }
    wrong += wrongRecord(outcome, mode, world.gone(), expected);
    Lines body;
    for (const auto& line : linesOf(bodyOf(outcome.log))) {
        body.push_back(line.empty() ? "|" : "| " + escaped(line));
    }
    Lines wantedBody;
    std::ranges::copy_if(expected, std::back_inserter(wantedBody),
                         [](const auto& line) { return line.starts_with('|'); });
    if (!wantedBody.empty() && !matches(wantedBody, body)) {
        wrong += "the log:\n" + difference(wantedBody, body);
    }
    world.gone().clear();
    world.settings.clear();
    world.takeEffects();
    return wrong;
}

} // namespace scenarios
