#pragma once

#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device/Device.h"
#include "Tests/Scenarios/Runner/Text.h"
#include "Tests/Support/Host.h"
#include "Tests/Support/TemporaryDevice.h"
#include "Tests/Support/TreeSnapshot.h"

#include <any>
#include <typeindex>

namespace scenarios {

/// What a scenario needs is not there.
struct Skipped : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A device folder that a scenario's lines make, the program's objects on it, and what became of it.
class World {
  public:
    /// What the loops of a scenario have come to, by the name of their variable.
    explicit World(Variables variables);
    ~World();

    /// Makes what a line gives; throws std::runtime_error for one that nobody understands.
    void give(std::string_view line);
    /// Whether all conditions before a line hold, such as "[from 8.0]", "[below 1141.1]" or "[clean]" (a
    /// value of a loop); they are taken off.
    bool takeConditions(std::string_view& line) const;

    /// The device, opened at first need, and the program's objects on it. What it warns of is said, as errors
    /// are.
    platform::Device& device();
    OZModelBuilder& builder();
    /// Lets go of all objects, as a new start of the program does.
    void reopen();

    /// A line of what an action says. `print` takes many, one text.
    void say(std::string_view line);
    void sayWarning(std::string_view line);
    void print(std::string_view lines);
    Lines takeOutput() { return std::exchange(_output, {}); }

    /// What changed in the tree since the last call, the program's log aside, and what tools were asked, as
    /// lines with their marks: "- gone", "+ new", "~ changed", "@ moved -> there" and "! command line".
    Lines takeEffects();
    [[nodiscard]] tests::TreeSnapshot tree() const;
    /// The tree as the last call of `takeEffects` has found it.
    [[nodiscard]] const tests::TreeSnapshot& lastTree() const { return _before; }
    /// Device paths that a run is expected to take with all below them; each starts without a "/", as in a
    /// snapshot.
    std::set<std::string>& gone() { return _gone; }
    /// Those of them that no log names.
    [[nodiscard]] const std::set<std::string>& unnamed() const { return _unnamed; }
    /// Runs a command line of the host in the device folder, with the built programs within reach; its
    /// output, errors ("& ") and status ("= ") are said.
    void shell(const std::string& command);

    /// An object of a verb's own type that is kept from one action to the next, made by `make` at first need
    /// and gone with `reopen`.
    template <class T, class Make>
    T& kept(Make make) {
        std::any& place = _kept[typeid(T)];
        return place.has_value() ? *std::any_cast<T>(&place) : place.emplace<T>(make());
    }

    Variables variables;
    TemporaryDevice folder;
    /// What a verb keeps beside the program's own objects, such as a terminal that another program is at.
    std::shared_ptr<void> companion;
    /// Settings of steps for runs.
    platform::Dictionary settings;

  private:
    void giveItems(std::string_view rest, bool isGone);
    void giveItem(const std::string& path, std::string_view content, bool isGone);
    void giveDemo(const std::string& version);
    void giveApp(const Words& words);
    void giveGoneBy(const Words& steps);
    void giveBundle(const Words& words, bool isContainer);
    void givePackage(std::string_view rest);
    /// Runs a command line of the host in the device folder, with the built programs within reach.
    [[nodiscard]] tests::Outcome host(const std::string& command) const;
    /// The paths of a word, one for each value of the loops over paths that it names.
    [[nodiscard]] Words spread(std::string_view word) const;

    platform::Dictionary _facts;
    std::vector<std::pair<std::string, Words>> _each;
    std::vector<std::pair<std::string, std::string>> _exclusions;
    std::set<std::string> _gone;
    std::set<std::string> _unnamed;
    /// Patterns of what a step takes, as they stand.
    std::vector<std::pair<std::string, std::string>> _rules;
    Lines _output;
    tests::TreeSnapshot _before;
    size_t _journalLines = 0;
    std::map<std::type_index, std::any> _kept;
    std::unique_ptr<platform::Device> _device;
    std::unique_ptr<OZModelBuilder> _builder;
};

/// A value as one line, such as {"a": [1, true, "text"]}, and the other way round; the latter throws
/// std::runtime_error.
[[nodiscard]] std::string textOf(const platform::Value& value);
[[nodiscard]] platform::Value valueOf(std::string_view text);

/// An action of scenarios: "> name word word".
using Verb = void (*)(World& world, const Words& words);
/// Makes verbs known under their names; one object for each room's file of verbs.
class Verbs {
  public:
    Verbs(std::initializer_list<std::pair<const char*, Verb>> verbs, const char* file = __builtin_FILE());
    /// The one of the room of the scenario that runs, or of the only room that has it. Throws
    /// std::runtime_error for a name that nobody knows.
    static Verb named(std::string_view name);
};

/// A run of the engine that is no cleanup, with counters and a log that begin anew, by the words after "run".
void perform(World& world, const Words& words, Analyze analyze);

/// The run of cleanup steps that "run STEP…" asks for, with what its lines expect of it. Gives what is wrong,
/// empty for nothing.
std::string runSteps(World& world, std::string_view line, const Lines& expected);
/// What follows "run STEP…" without being a mark.
[[nodiscard]] bool isExpectationOfRun(std::string_view line);

} // namespace scenarios
