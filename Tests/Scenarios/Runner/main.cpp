// Makes a test of each scenario in the files below Tests/Scenarios. README.md there tells their language.

#include "Platform/Files/Error.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Mounts.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

namespace scenarios {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view marks = "|&!-+~@=";

/// The room of the scenario that runs.
std::string& room() {
    static std::string room;
    return room;
}

/// By name and room.
std::map<std::string, std::map<std::string, Verb>, std::less<>>& verbs() {
    static std::map<std::string, std::map<std::string, Verb>, std::less<>> verbs;
    return verbs;
}

std::map<std::string, Action, std::less<>>& actions() {
    static std::map<std::string, Action, std::less<>> actions;
    return actions;
}

bool isAction(std::string_view line) {
    return line.starts_with("> ") || line.starts_with("$ ") || line.starts_with("run ");
}

bool isExpectation(std::string_view line) {
    while (line.starts_with('[')) {
        line.remove_prefix(std::min(line.find_first_not_of(' ', line.find(']') + 1), line.size()));
    }
    return (!line.empty() && marks.contains(line[0])) || isExpectationOfRun(line);
}

/// What stands behind an arrow, parted by " | ".
Lines partsOfArrow(std::string text) {
    for (size_t at = 0; (at = text.find(" | ", at)) != std::string::npos;) {
        text.replace(at, 3, "\n");
    }
    return linesOf(text);
}

/// The same as lines of output, or with other marks.
Lines linesOfArrow(const std::string& text) {
    Lines lines = partsOfArrow(text + "\n");
    for (auto& line : lines) {
        const bool hasMark = line.size() > 1 && marks.contains(line[0]) && line[1] == ' ';
        line = line.empty() ? "|" : hasMark ? line : "| " + line;
    }
    return lines;
}

/// What has come of actions in place of what their files expect, by file and the numbers of the first line
/// and of the one behind the last. Only with OZ_SCENARIOS=accept.
std::map<std::string, std::map<std::pair<size_t, size_t>, Lines>>& accepted() {
    static std::map<std::string, std::map<std::pair<size_t, size_t>, Lines>> accepted;
    return accepted;
}

bool accepts() {
    const char* wish = std::getenv("OZ_SCENARIOS");
    return wish != nullptr && std::string_view(wish) == "accept";
}

void writeAccepted() {
    for (const auto& [file, places] : accepted()) {
        std::ifstream stream(file);
        Lines lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        for (auto place = places.rbegin(); place != places.rend(); ++place) {
            const auto [first, end] = place->first;
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(first),
                        lines.begin() + static_cast<std::ptrdiff_t>(end));
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(first), place->second.begin(),
                         place->second.end());
        }
        std::ofstream out(file);
        for (const auto& line : lines) {
            out << line << "\n";
        }
    }
}

/// The values that a scenario's loops ("for X in a b", and "run … in all modes") go through, each once.
std::vector<Variables> passesOf(const Scenario& scenario) {
    std::vector<Variables> passes = {{}};
    const auto spread = [&](const std::string& name, const Words& values) {
        std::vector<Variables> next;
        for (const auto& pass : passes) {
            for (const auto& value : values) {
                next.push_back(pass);
                next.back()[name] = value;
            }
        }
        passes = next;
    };
    Variables texts;
    for (const auto& [number, text] : scenario.lines) {
        if (text.starts_with("let ")) {
            std::string_view rest = std::string_view(text).substr(4);
            const std::string name = takeWord(rest);
            takeWord(rest);
            texts[name] = rest;
        } else if (text.starts_with("for ")) {
            Words words = wordsOf(expanded(text, texts));
            spread(words.at(1), {words.begin() + 3, words.end()});
        } else if (text.starts_with("run ") && (text + " => ").contains(" in all modes => ") &&
                   !passes[0].contains("mode")) {
            spread("mode", {"analysis", "test", "clean"});
        }
    }
    return passes;
}

/// One scenario, from its given lines to its last action, for each value of its loops.
class ScenarioTest : public testing::Test {
  public:
    ScenarioTest(std::string file, Scenario scenario)
        : _file(std::move(file))
        , _scenario(std::move(scenario)) {}

    void TestBody() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root, or a user namespace that maps it";
        }
        const auto mounts = [](const Line& line) {
            return line.text.starts_with("readonly ") || line.text.starts_with("memory ");
        };
        if (std::ranges::any_of(_scenario.lines, mounts) && !tests::hasOwnMounts()) {
            GTEST_SKIP() << "needs mounts of its own";
        }
        const auto passes = passesOf(_scenario);
        for (const auto& pass : passes) {
            std::string name;
            for (const auto& [variable, value] : pass) {
                name.append(" ").append(variable).append("=").append(value);
            }
            SCOPED_TRACE(_scenario.title + name);
            _isOnlyPass = passes.size() == 1;
            try {
                run(pass);
            } catch (const Skipped& reason) {
                GTEST_SKIP() << reason.what();
            } catch (const std::exception& error) {
                ADD_FAILURE_AT(_file.c_str(), static_cast<int>(_at + 1)) << error.what();
            }
        }
    }

  private:
    void run(const Variables& pass) {
        World world(pass);
        room() = fs::path(_file).parent_path().filename().string();
        const auto& lines = _scenario.lines;
        bool hasChanged = true;
        for (size_t place = 0; place < lines.size();) {
            _at = lines[place].number;
            std::string text = lines[place++].text;
            if (text.empty() || text.starts_with('#') || text.starts_with("for ")) {
                continue;
            }
            if (!isAction(text)) {
                // A content of several lines stands below its item, two blanks further in.
                if (text.ends_with(':')) {
                    text += " ";
                    while (place < lines.size() && lines[place].text.starts_with("  ")) {
                        text += escaped(lines[place++].text.substr(2)) + "\\n";
                    }
                }
                world.give(text);
                hasChanged = true;
                continue;
            }
            const size_t first = place;
            Lines expected;
            for (; place < lines.size() && isExpectation(lines[place].text); ++place) {
                std::string_view line = lines[place].text;
                if (world.takeConditions(line)) {
                    expected.push_back(expanded(line, world.variables));
                }
            }
            if (std::exchange(hasChanged, false) && !text.starts_with("run ")) {
                world.takeEffects();
            }
            if (text.starts_with("run ")) {
                const size_t arrow = std::min(text.find(" => "), text.size());
                for (const auto& part : partsOfArrow(text.substr(std::min(arrow + 4, text.size())))) {
                    std::string_view line = part;
                    if (world.takeConditions(line)) {
                        expected.push_back(expanded(line, world.variables));
                    }
                }
                std::string words = expanded(text.substr(4, arrow - 4), world.variables);
                if (words.ends_with(" in all modes")) {
                    words.replace(words.size() - 9, 9, world.variables["mode"]);
                }
                if (const std::string wrong = runSteps(world, words, expected); !wrong.empty()) {
                    ADD_FAILURE_AT(_file.c_str(), static_cast<int>(_at + 1)) << wrong;
                }
            } else {
                act(world, text, expected, first, place);
            }
        }
    }

    void act(World& world, const std::string& text, Lines& expected, size_t first, size_t end) {
        const size_t arrow = text.rfind(" => ");
        if (arrow != std::string::npos) {
            std::ranges::copy(linesOfArrow(expanded(text.substr(arrow + 4), world.variables)),
                              std::inserter(expected, expected.begin()));
        }
        const std::string command = expanded(text.substr(2, arrow - 2), world.variables);
        if (text[0] == '$') {
            world.shell(command);
        } else {
            speak(world, command);
        }
        Lines actual = world.takeOutput();
        std::ranges::copy(world.takeEffects(), std::back_inserter(actual));
        for (auto& line : actual) {
            const std::string place = world.folder.folder().string();
            for (size_t at = 0; (at = line.find(place, at)) != std::string::npos;) {
                line.replace(at, place.size(), "DEVICE");
            }
        }
        if (matches(expected, actual)) {
            return;
        }
        if (accepts() && _isOnlyPass && arrow == std::string::npos) {
            const size_t number = _at + 1;
            accepted()[_file][{number, number + end - first}] = actual;
        } else {
            ADD_FAILURE_AT(_file.c_str(), static_cast<int>(_at + 1)) << text << "\n"
                                                                     << difference(expected, actual);
        }
    }

    static void speak(World& world, const std::string& command) {
        Words words = wordsOf(command);
        const Verb verb = Verbs::named(words.at(0));
        words.erase(words.begin());
        try {
            verb(world, words);
        } catch (const platform::Exception& error) {
            world.say("throws " + error.name() + ": " + error.what());
        } catch (const platform::AssertionFailure& error) {
            world.say(std::string("throws ") + error.what());
        }
    }

    std::string _file;
    Scenario _scenario;
    size_t _at = 0;
    bool _isOnlyPass = true;
};

std::string nameOf(std::string_view text) {
    std::string name;
    bool startsWord = true;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0) {
            name += startsWord ? static_cast<char>(std::toupper(byte)) : character;
        }
        startsWord = std::isalnum(byte) == 0 && character != '\'';
    }
    return name;
}

void registerFile(const fs::path& file) {
    const std::string suite = nameOf(file.stem().string());
    for (const auto& scenario : scenariosOf(file.string())) {
        testing::RegisterTest(suite.c_str(), nameOf(scenario.title).c_str(), nullptr, nullptr, file.c_str(),
                              1,
                              [=]() -> testing::Test* { return new ScenarioTest(file.string(), scenario); });
    }
}

} // namespace

Verbs::Verbs(std::initializer_list<std::pair<const char*, Verb>> named, const char* file) {
    const std::string stem = fs::path(file).stem().string();
    for (const auto& [name, verb] : named) {
        verbs()[name][stem.substr(0, stem.find("Verbs"))] = verb;
    }
}

Actions::Actions(std::initializer_list<std::pair<const char*, Action>> named) {
    for (const auto& [name, action] : named) {
        actions()[name] = action;
    }
}

Action Actions::named(std::string_view name) {
    const auto action = actions().find(name);
    return action == actions().end() ? nullptr : action->second;
}

Verb Verbs::named(std::string_view name) {
    const auto known = verbs().find(name);
    if (known == verbs().end()) {
        throw std::runtime_error("no verb: " + std::string(name));
    }
    const auto own = known->second.find(room());
    if (own == known->second.end() && known->second.size() > 1) {
        throw std::runtime_error("more than one room has the verb " + std::string(name));
    }
    return own == known->second.end() ? known->second.begin()->second : own->second;
}

} // namespace scenarios

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Devices are many and small, and dpkg has each of its files put on the disk. They lie in a memory of
    // their own, which ends with this process, and ends a copy of a hole of a terabyte before it fills the
    // host's.
    if (tests::hasOwnMounts() && ::mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=1g") == 0) {
        ::setenv("TMPDIR", "/dev/shm", 1);
    }
    // No window opens by mistake on the display of whoever runs the tests.
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        ::unsetenv(display);
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(OZ_SCENARIOS)) {
        if (entry.path().extension() == ".txt" && entry.path().filename() != "CMakeLists.txt") {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    std::ranges::for_each(files, scenarios::registerFile);
    const int status = RUN_ALL_TESTS();
    scenarios::writeAccepted();
    return status;
}
