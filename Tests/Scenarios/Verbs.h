#pragma once

#include "Tests/Scenarios/Runner/World.h"

/// Begins the body of a verb, which makes use of `world` and of the `words` behind its name.
#define VERB(name) OZ_NUMBERED_VERB(name, __COUNTER__)
#define OZ_NUMBERED_VERB(name, number) OZ_VERB(name, number)
#define OZ_VERB(name, number)                                                                                \
    static void verb##number(World& world, const Words& words);                                              \
    static const Verbs known##number{{name, verb##number}};                                                  \
    static void verb##number([[maybe_unused]] World& world, [[maybe_unused]] const Words& words)

namespace scenarios {

/// The words from one place on.
inline Words rest(const Words& words, size_t place = 1) {
    return {words.begin() + static_cast<std::ptrdiff_t>(std::min(place, words.size())), words.end()};
}

/// Texts as one, or what stands for none.
inline std::string joined(auto&& texts, const char* none = "", const char* separator = " ") {
    return std::ranges::empty(texts) ? none : fmt::format("{}", fmt::join(texts, separator));
}

/// "name=value" in two; no value where there is no "=".
inline std::pair<std::string, std::string> namedValue(const std::string& word) {
    const size_t equals = std::min(word.find('='), word.size());
    return {word.substr(0, equals), word.substr(std::min(equals + 1, word.size()))};
}

/// Says the subjects' answers, or one for all where they agree. "ok" goes without saying.
inline void sayAnswers(World& world, const Words& subjects,
                       const std::function<std::string(const std::string&)>& ask) {
    Words answers;
    std::ranges::transform(subjects, std::back_inserter(answers), ask);
    if (std::ranges::adjacent_find(answers, std::not_equal_to()) != answers.end()) {
        world.say(joined(answers, "", ", "));
    } else if (answers.at(0) != "ok") {
        world.say(answers[0]);
    }
}

/// What another verb says to these words.
inline Lines saidBy(World& world, const std::string& verb, const Words& words) {
    Verbs::named(verb)(world, words);
    Lines lines = world.takeOutput();
    for (auto& line : lines) {
        line.erase(0, 2);
    }
    return lines;
}

} // namespace scenarios
