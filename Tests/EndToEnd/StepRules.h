#pragma once

#include <iosfwd>
#include <span>
#include <string_view>

// What each step takes from a device, written down apart from the engine's own tables.

/// How a path goes.
enum class Goes {
    /// A regular file.
    file,
    /// A regular file, or a folder with all that is in it.
    item,
    /// A link, uncounted.
    link,
};

/// A pattern that a whole path matches. "/private" before "/var" is left out, and containers bear the
/// identifier of what they contain.
struct StepRule {
    Goes goes;
    const char* pattern;
    /// The first version of iOS that has it, and the first that no longer does.
    int from = 4;
    int below = 12;
};

struct StepCase {
    std::string_view key;
    int number;
    std::span<const StepRule> rules;
    /// The first version of iOS that has the step.
    int from = 4;

    friend std::ostream& operator<<(std::ostream& out, const StepCase& step);
};

extern const std::span<const StepCase> stepCases;
extern const std::span<const StepRule> dependencyRules;
/// Items beside those that go, one a line of a temporary folder's language.
extern const std::span<const std::string_view> stepNeighbours;
