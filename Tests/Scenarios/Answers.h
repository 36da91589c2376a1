#pragma once

#include "Tests/Scenarios/Runner/World.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace scenarios {

/// Says the subjects' answers, or one for all where they agree. "ok" goes without saying.
inline void sayAnswers(World& world, const Words& subjects,
                       const std::function<std::string(const std::string&)>& ask) {
    Words answers;
    std::ranges::transform(subjects, std::back_inserter(answers), ask);
    if (std::ranges::adjacent_find(answers, std::not_equal_to()) != answers.end()) {
        world.say(fmt::format("{}", fmt::join(answers, ", ")));
    } else if (answers.at(0) != "ok") {
        world.say(answers[0]);
    }
}

} // namespace scenarios
