// A run of cleanup steps, of which its scenario says beforehand what goes.

#include "Model/Core/OZCleanupLogger.h"
#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

using tests::TreeSnapshot;

/// The path that is said to go and takes this one along; empty where none does.
std::string topOf(const std::set<std::string>& gone, const std::string& path) {
    const auto isIn = [&](const auto& item) { return path == item || isBelow(path, item); };
    const auto top = std::ranges::find_if(gone, isIn);
    return top == gone.end() ? "" : *top;
}

TreeSnapshot treeAfter(const std::string& mode, const TreeSnapshot& before,
                       const std::set<std::string>& gone) {
    TreeSnapshot after;
    for (const auto& [path, state] : before) {
        const auto top = topOf(gone, path);
        if (mode == "analysis" || top.empty()) {
            after[path] = state;
        } else if (mode == "test") {
            after[top + ".OzvarineBackup" + path.substr(top.size())] = state;
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
    return std::ranges::all_of(texts, [&](const auto& text) {
        at = log.find(text, at);
        at += at == std::string::npos ? 0 : text.size();
        return at != std::string::npos;
    });
}

/// What a run left behind, and what lines of the scenario say of it.
struct Outcome {
    World& world;
    const Lines& expected;
    TreeSnapshot before;
    std::string log;
    uint64_t files = 0;
    uint64_t freed = 0;

    [[nodiscard]] bool says(std::string_view word) const {
        return std::ranges::any_of(expected, [&](const auto& line) { return line.starts_with(word); });
    }
};

/// The log names what goes, and the record counts what the log names, unless a line says something else.
std::string wrongRecord(const Outcome& outcome, bool isTest) {
    auto named = tests::itemsNamedByLog(outcome.log, outcome.before);
    if (!outcome.says("count ") && !outcome.says("named …") && named.size() != outcome.files) {
        return fmt::format("the log names {} items, {} are counted\n", named.size(), outcome.files);
    }
    if (isTest || outcome.says("named ")) {
        return "";
    }
    // What could not go is listed below the log.
    const size_t end = std::min(outcome.log.find("\nItems that stayed\n"), outcome.log.size());
    std::erase_if(named, [&](const auto& path) {
        return outcome.log.find(": /" + path + "\n", end) != std::string::npos;
    });
    const std::set<std::string> unique(named.begin(), named.end());
    const auto& gone = outcome.world.gone();
    std::set<std::string> wanted;
    for (const auto& [path, state] : outcome.before) {
        if ((outcome.says("whole") ? gone.contains(path) : !topOf(gone, path).empty()) &&
            !outcome.world.unnamed().contains(path)) {
            wanted.insert(path);
        }
    }
    return wanted == unique ? ""
                            : "named by the log:\n" +
                                  difference({wanted.begin(), wanted.end()}, {unique.begin(), unique.end()});
}

std::string wrongLine(const Outcome& outcome, std::string_view line) {
    const std::string whole(line);
    const std::string kind = takeWord(line);
    const std::string body = bodyOf(outcome.log);
    const Words words = wordsOf(line);
    const bool holds = kind == "count"   ? std::stoull(words.at(0)) == outcome.files
                       : kind == "freed" ? std::stoull(words.at(0)) == outcome.freed
                       : kind == "log"   ? isInOrder(body, words)
                       : kind == "nolog" ? !body.contains(words.at(0))
                       : kind == "named"
                           ? line == "…" || words == tests::itemsNamedByLog(outcome.log, outcome.before)
                           : kind == "whole";
    return holds ? ""
                 : fmt::format("not so: {} ({} files, {} bytes, log:\n{})\n", whole, outcome.files,
                               outcome.freed, body);
}

} // namespace

bool isExpectationOfRun(std::string_view line) {
    const std::set<std::string> kinds = {"count", "freed", "log", "nolog", "named", "whole"};
    return kinds.contains(takeWord(line));
}

std::string runSteps(World& world, std::string_view line, const Lines& expected) {
    Words words = wordsOf(line.substr(4));
    std::string mode = "clean";
    if (words.size() > 2 && (words.end()[-2] == "in" || words.back() == "modes")) {
        mode = words.back() == "modes" ? world.variables["mode"] : words.back();
        words.resize(words.size() - (words.back() == "modes" ? 3 : 2));
    }
    if (mode != "clean" && mode != "test" && mode != "analysis") {
        throw std::runtime_error("no mode: " + mode);
    }
    const bool isOfSteps = std::isupper(words.at(0)[0]) != 0;
    for (const auto& step : isOfSteps ? words : Words{}) {
        const size_t equals = std::min(step.find('='), step.size());
        world.settings[step.substr(0, equals)] =
            uint64_t{equals < step.size() ? std::stoull(step.substr(equals + 1)) : 1};
    }
    // The log needs its place.
    std::error_code error;
    std::filesystem::create_directories(world.folder.hostPath("/var/mobile/Library"), error);
    OZCore& core = world.builder().core();
    world.takeEffects();
    Outcome outcome{.world = world, .expected = expected, .before = world.lastTree()};
    {
        const tests::StandardOutput nowhere("/dev/null");
        const auto analyze = mode == "analysis" ? Analyze::yes : Analyze::no;
        core.choices().setTestMode(mode == "test");
        core.clean(&world.settings, analyze);
        if (!isOfSteps) {
            core.cleanupLogger()->deleteLogFile();
            perform(world, words, analyze);
        }
    }
    outcome.log = world.folder.contents(OZCleanupLogger::logFilePath);
    outcome.files = core.fileCount();
    outcome.freed = core.freedSpace();

    // Lines with marks tell where a run does something else than taking what is said to go.
    const TreeSnapshot wanted = treeAfter(mode, outcome.before, world.gone());
    Lines effects = world.takeOutput();
    const Lines all = world.takeEffects();
    std::ranges::copy(effectsOn(wanted, world.lastTree()), std::back_inserter(effects));
    std::ranges::copy_if(all, std::back_inserter(effects), [](const auto& it) { return it[0] == '!'; });
    Lines marked;
    Lines wantedBody;
    std::string wrong;
    for (const auto& wish : expected) {
        isExpectationOfRun(wish) ? void(wrong += wrongLine(outcome, wish))
                                 : (wish.starts_with('|') ? wantedBody : marked).push_back(wish);
    }
    wrong += matches(marked, effects) ? "" : "beside what goes:\n" + difference(marked, effects);
    wrong += wrongRecord(outcome, mode == "test");
    Lines body;
    for (const auto& text : linesOf(bodyOf(outcome.log))) {
        body.push_back(text.empty() ? "|" : "| " + escaped(text));
    }
    wrong +=
        wantedBody.empty() || matches(wantedBody, body) ? "" : "the log:\n" + difference(wantedBody, body);
    world.gone().clear();
    world.settings.clear();
    return wrong;
}

} // namespace scenarios
