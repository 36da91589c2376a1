#pragma once

#include "Tests/Support/Usual.h"

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

} // namespace tests
