#include "Categories/KeyValueText.h"
#include "Categories/Ranges.h"
#include "Categories/Text.h"
#include "Categories/URLQuery.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using Texts = std::map<std::string, std::string, std::less<>>;

TEST(Deserialize, KeepsEntriesOfExactlyTwoParts) {
    EXPECT_EQ(dictionaryWithString(" a = 1 \r\nb=2\n\nno separator\nc=1=2\nb = 3", "="),
              (Texts{{"a", "1"}, {"b", "3"}}));
    EXPECT_EQ(dictionaryWithString("=\xE2\x80\xA8k=", "="), (Texts{{"", ""}, {"k", ""}}));
    EXPECT_EQ(dictionaryWithString("a=1", ""), Texts{});
    EXPECT_EQ(dictionaryWithString("", "="), Texts{});
}

TEST(Deserialize, ReadsAListingOfOverrides) {
    icu::UnicodeSet trimmed = whitespaceAndNewlineCharacterSet();
    trimmed.add('"');
    const std::string listing =
        "disabled services = {\n\t\"com.example.one\" => true\n\t\"com.example.two\" => false\n}\n";
    EXPECT_EQ(dictionaryWithString(listing, "=>", "", trimmed),
              (Texts{{"com.example.one", "true"}, {"com.example.two", "false"}}));
    EXPECT_EQ(dictionaryWithString("a:1;;b:2\n;;c", ":", ";;", trimmed), (Texts{{"a", "1"}, {"b", "2"}}));
}

TEST(URLQuery, SplitsAtTheFirstEqualsSign) {
    EXPECT_EQ(queryArguments("app://host/path?a=1&b&c=&=d&e=f=g&a=%202#h?i=j"),
              (Texts{{"a", "%202"}, {"b", ""}, {"c", ""}, {"e", "f=g"}}));
    EXPECT_EQ(queryArguments("app:?="), (Texts{{"", ""}}));
    EXPECT_EQ(queryArguments("app://host/path#?a=1"), Texts{});
}

TEST(Safety, SubarrayStaysWithinTheArray) {
    const std::vector<int> array{1, 2, 3};
    constexpr size_t most = std::numeric_limits<size_t>::max();
    EXPECT_EQ(OZSafety_subarrayWithRange(array, 1, 1), std::vector<int>{2});
    EXPECT_EQ(OZSafety_subarrayWithRange(array, 1, most), (std::vector<int>{2, 3}));
    EXPECT_TRUE(OZSafety_subarrayWithRange(array, 3, 1).empty());
    EXPECT_TRUE(OZSafety_subarrayWithRange(array, most, most).empty());
}

} // namespace
