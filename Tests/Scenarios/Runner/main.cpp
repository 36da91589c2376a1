// Makes a test of each scenario in the files below Tests/Scenarios. README.md there tells their language.

#include "Platform/Files/Error.h"
#include "Tests/Scenarios/Runner/World.h"

#include <sys/mount.h>

namespace scenarios {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view marks = "|&!-+~@=";

/// The room of the scenario that runs.
std::string room;

/// By name and room.
std::map<std::string, std::map<std::string, Verb>, std::less<>>& verbs() {
    static std::map<std::string, std::map<std::string, Verb>, std::less<>> verbs;
    return verbs;
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
            const Words words = wordsOf(expanded(text, texts));
            spread(words.at(1), {words.begin() + 3, words.end()});
        } else if (text.starts_with("run ") && (text + " => ").contains(" in all modes => ") &&
                   !passes[0].contains("mode")) {
            spread("mode", {"analysis", "test", "clean"});
        }
    }
    return passes;
}

/// Says what the verb of a line says. Gives what is wrong with all that came of it; empty for nothing.
std::string act(World& world, const std::string& line, const Lines& expected) {
    if (line[0] == '$') {
        world.shell(line.substr(2));
    } else {
        Words words = wordsOf(line);
        const Verb verb = Verbs::named(words.at(1));
        words.erase(words.begin(), words.begin() + 2);
        try {
            verb(world, words);
        } catch (const platform::Exception& error) {
            world.say("throws " + error.name() + ": " + error.what());
        } catch (const platform::AssertionFailure& error) {
            world.say(std::string("throws ") + error.what());
        }
    }
    Lines actual = world.takeOutput();
    std::ranges::copy(world.takeEffects(), std::back_inserter(actual));
    for (auto& said : actual) {
        said = tests::replaced(said, world.folder.folder().string(), "DEVICE");
    }
    return matches(expected, actual) ? "" : difference(expected, actual);
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
        for (const auto& pass : passesOf(_scenario)) {
            std::string name;
            for (const auto& [variable, value] : pass) {
                name.append(" ").append(variable).append("=").append(value);
            }
            SCOPED_TRACE(_scenario.title + name);
            try {
                run(pass);
            } catch (const Skipped& reason) {
                GTEST_SKIP() << reason.what();
            } catch (const std::exception& error) {
                fail(error.what());
            }
        }
    }

  private:
    void fail(const std::string& what) const {
        ADD_FAILURE_AT(_file.c_str(), static_cast<int>(_at + 1)) << what;
    }

    void run(const Variables& pass) {
        World world(pass);
        room = fs::path(_file).parent_path().filename().string();
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
            const bool isRun = text.starts_with("run ");
            const size_t arrow = std::min(text.rfind(" => "), text.size());
            Lines expected;
            const auto expect = [&](std::string_view line) {
                if (world.takeConditions(line)) {
                    expected.push_back(expanded(line, world.variables));
                }
            };
            if (arrow < text.size()) {
                const std::string parts = expanded(text.substr(arrow + 4), world.variables) + "\n";
                for (const auto& part : linesOf(tests::replaced(parts, " | ", "\n"))) {
                    const bool hasMark = part.size() > 1 && marks.contains(part[0]) && part[1] == ' ';
                    isRun ? expect(part)
                          : expected.push_back(part.empty() ? "|"
                                               : hasMark    ? part
                                                            : "| " + part);
                }
            }
            for (; place < lines.size() && isExpectation(lines[place].text); ++place) {
                expect(lines[place].text);
            }
            if (std::exchange(hasChanged, false) && !isRun) {
                world.takeEffects();
            }
            const std::string line = expanded(text.substr(0, arrow), world.variables);
            const std::string wrong = isRun ? runSteps(world, line, expected) : act(world, line, expected);
            if (!wrong.empty()) {
                fail(text + "\n" + wrong);
            }
        }
    }

    std::string _file;
    Scenario _scenario;
    size_t _at = 0;
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
    for (const auto& scenario : scenariosOf(file.string())) {
        const auto make = [=]() -> testing::Test* { return new ScenarioTest(file.string(), scenario); };
        testing::RegisterTest(nameOf(file.stem().string()).c_str(), nameOf(scenario.title).c_str(), nullptr,
                              nullptr, file.c_str(), 1, make);
    }
}

} // namespace

Verbs::Verbs(std::initializer_list<std::pair<const char*, Verb>> named, const char* file) {
    const std::string stem = fs::path(file).stem().string();
    for (const auto& [name, verb] : named) {
        verbs()[name][stem.substr(0, stem.find("Verbs"))] = verb;
    }
}

Verb Verbs::named(std::string_view name) {
    const auto known = verbs().find(name);
    if (known == verbs().end()) {
        throw std::runtime_error("no verb: " + std::string(name));
    }
    const auto own = known->second.find(room);
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
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(OZ_SCENARIOS)) {
        if (entry.path().extension() == ".txt" && entry.path().filename() != "CMakeLists.txt") {
            files.insert(entry.path());
        }
    }
    std::ranges::for_each(files, scenarios::registerFile);
    return RUN_ALL_TESTS();
}
