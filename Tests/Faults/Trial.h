#pragma once

#include "Model/Items/Togglable/OZTogglableFile.h"
#include "Model/Tasks/OZTask.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Engine.h"

namespace tests {

/// A call to the system, the `number`th of its name, counted from 1.
struct Call {
    std::string name;
    size_t number = 0;
    /// Where it was made: the functions on the stack.
    std::string place;
    /// The item that it is about, by its path on the host; empty where that is no matter of the tree. Calls
    /// that read or write what is open go on where the last one ended: each has its own.
    std::string item;
};

struct Fault {
    std::string call;
    size_t number = 0;
    int error = 0;
};

/// The name under which allocations count as calls; they fail with an exception, whatever the error.
inline constexpr const char* allocation = "operator new";

/// The calls that `work` makes: allocations alone, or all others.
std::vector<Call> callsOf(const std::function<void()>& work, bool allocations);

/// Runs `work` with that one call failing instead of being made.
void runWithFault(const Fault& fault, const std::function<void()>& work);

/// From now on all calls of this name fail, whatever else does; with no name, none.
void setStandingFault(Fault fault);

/// What a trial works on: a device, and what its run needs and leaves.
struct Subject {
    scenarios::World world{{}};
    std::unique_ptr<Engine> engine;
    std::shared_ptr<OZTogglableFile> item;
    std::shared_ptr<OZTask> task;
    /// What the operation says of itself.
    std::optional<platform::Result<void>> done;
    uint64_t count = 0;
};

/// What came of a run.
struct Aftermath {
    Subject& subject;
    TreeSnapshot before;
    TreeSnapshot after;
    /// Whether all has to be as if there had been no fault.
    bool isUndisturbed;
};

/// Expects what has to hold after a run, whatever failed.
using Promise = void (*)(const Aftermath&);

struct Trial {
    std::string name;
    /// Lines as those of scenarios.
    std::string device;
    std::function<void(Subject&)> prepare;
    /// What the faults strike.
    std::function<void(Subject&)> run;
    std::vector<Promise> promises;
    /// Fails in all runs, whatever else does.
    Fault standing{};
    /// The one call that is struck; where it is not told, all but allocations.
    std::string strikes{};

    friend void PrintTo(const Trial& trial, std::ostream* stream) { *stream << trial.name; }
};

/// Prepares and runs the trial with none of the calls failing that its run makes, then with each in turn, and
/// holds each aftermath against the promises. A place in the code that has met every error is struck again
/// for another item alone; with OZ_FAULT_ERRORS=all in the environment each call fails with each error. An
/// allocation's exception may reach the caller. The figures are printed.
void tryEveryFault(const Trial& trial);

} // namespace tests
