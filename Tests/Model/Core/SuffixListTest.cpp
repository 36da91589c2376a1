#include "Model/Core/SuffixList.h"

#include "Tests/Support/Usual.h"

namespace {

std::vector<std::string> randomTexts(std::mt19937& random, size_t count, size_t longest) {
    std::vector<std::string> texts(count);
    for (auto& text : texts) {
        text.resize(random() % (longest + 1));
        std::ranges::generate(text, [&] { return "ab/\xff"[random() % (random() % 3 == 0 ? 4 : 2)]; });
    }
    return texts;
}

} // namespace

// What the list stands for is a scan from its start for every text. Few letters and short texts, so that
// suffixes of suffixes and equal texts are the rule.
TEST(SuffixList, GivesWhatAScanOfTheListWouldGive) {
    std::mt19937 random(20260);
    size_t hits = 0;
    for (int round = 0; round < 400; ++round) {
        const auto suffixes = randomTexts(random, random() % 60, 1 + random() % 8);
        auto left = suffixes;
        SuffixList list(suffixes);
        for (const auto& text : randomTexts(random, 100, 12)) {
            const auto first = std::ranges::find_if(
                left, [&](const auto& suffix) { return !suffix.empty() && text.ends_with(suffix); });
            std::optional<size_t> expected;
            if (first != left.end()) {
                expected = first - left.begin();
                // Each is taken once.
                first->clear();
                ++hits;
            }
            ASSERT_EQ(list.take(text), expected) << "round " << round << ", text " << text;
        }
    }
    EXPECT_GT(hits, 4000);
}
