#include "Model/Core/SuffixList.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace {

/// What the list stands for: go through it from the start for every text.
class ScannedList {
  public:
    explicit ScannedList(std::vector<std::string> suffixes)
        : _suffixes(std::move(suffixes))
        , _taken(_suffixes.size()) {}

    std::optional<size_t> take(std::string_view text) {
        for (size_t place = 0; place < _suffixes.size(); ++place) {
            if (!_taken[place] && !_suffixes[place].empty() && text.ends_with(_suffixes[place])) {
                _taken[place] = true;
                return place;
            }
        }
        return std::nullopt;
    }

  private:
    std::vector<std::string> _suffixes;
    std::vector<bool> _taken;
};

std::vector<std::string> randomTexts(std::mt19937& random, size_t count, size_t longest) {
    std::vector<std::string> texts(count);
    for (auto& text : texts) {
        text.resize(random() % (longest + 1));
        std::ranges::generate(text, [&] { return "ab/\xff"[random() % (random() % 3 == 0 ? 4 : 2)]; });
    }
    return texts;
}

} // namespace

TEST(SuffixList, TakesTheFirstTextOfTheListOnce) {
    SuffixList list({"c/d", "", "d", "/b/c/d", "d", "D"});
    EXPECT_EQ(list.take("/a/b/c/d"), 0);
    EXPECT_EQ(list.take("/a/b/c/d"), 2);
    EXPECT_EQ(list.take("xd"), 4);
    EXPECT_EQ(list.take("xd"), std::nullopt);
    EXPECT_EQ(list.take("/a/b/c/d"), 3);
    EXPECT_EQ(list.take(""), std::nullopt);
    EXPECT_EQ(SuffixList({}).take("a"), std::nullopt);
}

// Few letters and short texts, so that suffixes of suffixes and equal texts are the rule.
TEST(SuffixList, GivesWhatAScanOfTheListWouldGive) {
    std::mt19937 random(20260);
    size_t hits = 0;
    for (int round = 0; round < 400; ++round) {
        const auto suffixes = randomTexts(random, random() % 60, 1 + random() % 8);
        SuffixList list(suffixes);
        ScannedList scanned(suffixes);
        for (const auto& text : randomTexts(random, 100, 12)) {
            const auto expected = scanned.take(text);
            ASSERT_EQ(list.take(text), expected) << "round " << round << ", text " << text;
            hits += expected ? 1 : 0;
        }
    }
    EXPECT_GT(hits, 4000);
}
