#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

namespace tests {

/// One call to the system that fails: the `number`th of its name, counted from 1.
struct Fault {
    std::string call;
    size_t number = 0;
    int error = 0;
};

/// The name under which allocations count as calls; they fail with an exception, whatever the error.
inline constexpr const char* allocation = "operator new";

/// How often `work` makes each call. Only calls of this thread count, here and below.
std::map<std::string, size_t> countCalls(const std::function<void()>& work);

/// Runs `work` with that one call failing instead of being made.
void runWithFault(const Fault& fault, const std::function<void()>& work);

/// While it lives, all calls of a name fail, whatever else does.
class StandingFault {
  public:
    StandingFault(std::string call, int error);
    StandingFault(const StandingFault&) = delete;
    StandingFault& operator=(const StandingFault&) = delete;
    ~StandingFault();
};

} // namespace tests
