#include "Categories/Text.h"

#include "Categories/ByteText.h"
#include "Categories/FileURLs.h"
#include "Categories/KeyValueText.h"
#include "Categories/Ranges.h"
#include "Categories/URLQuery.h"
#include "Platform/Files/Error.h"
#include "Tests/Support/Usual.h"

using Texts = std::map<std::string, std::string, std::less<>>;

constexpr uint64_t mebibyte = uint64_t{1} << 20;
constexpr uint64_t tebibyte = uint64_t{1} << 40;
constexpr uint64_t mostBytes = std::numeric_limits<uint64_t>::max();

TEST(ByteFormatter, picksAUnitOrTakesTheGivenOne) {
    const struct {
        std::initializer_list<uint64_t> sizes;
        ByteFormat format;
        const char* said;
    } rows[] = {{{0, 1023, 1024, mebibyte - 1}, {}, "0.00 B; 1,023.00 B; 1.00 KiB; 1,024.00 KiB; "},
                {{mebibyte, tebibyte / 1024 * 1023}, {}, "1.00 MiB; 1,023.00 GiB; "},
                // A half goes to the even neighbour.
                {{1536, 2560}, {0}, "2 KiB; 2 KiB; "},
                {{mebibyte}, {2, 1}, "1,048,576.00 B; "},
                {{mebibyte}, {0, 2}, "1,024 KiB; "},
                {{mebibyte}, {1, 3}, "1.0 MiB; "},
                {{mebibyte}, {4, 4}, "0.0010 GiB; "},
                {{tebibyte, mostBytes}, {0, 0, false}, "1; 16,777,216; "},
                {{tebibyte}, {}, "NSRangeException; "},
                {{5}, {2, 5}, "NSRangeException; "},
                {{5}, {2, 99}, "NSRangeException; "},
                {{1023}, {2, 0, true, "de_DE.UTF-8"}, "1.023,00 B; "},
                {{1023}, {2, 0, true, "no such locale"}, "1,023.00 B; "}};
    for (auto [sizes, format, said] : rows) {
        std::string text;
        format.locale = format.locale.value_or("en_US");
        for (const uint64_t bytes : sizes) {
            try {
                text += humanReadableStringFromBytes(bytes, format) + "; ";
            } catch (const platform::Exception& exception) {
                text += exception.name() + "; ";
            }
        }
        EXPECT_EQ(text, said);
    }
}

TEST(ByteFormatter, followsTheEnvironment) {
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        unsetenv(variable);
    }
    EXPECT_EQ(localeFromEnvironment(), "en_US");
    setenv("LANG", "fr_FR.UTF-8", 1);
    setenv("LC_NUMERIC", "de_DE.UTF-8", 1);
    EXPECT_EQ(humanReadableStringFromBytes(1), "1,00 B");
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(humanReadableStringFromBytes(1), "1.00 B");
}

TEST(Timestamp, showsTheMomentInTheDevicesZone) {
    using namespace std::chrono;
    const system_clock::time_point winter = sys_days{year{2018} / 1 / 31} + hours{23} + minutes{5};
    EXPECT_EQ(timestampString("UTC", winter), "01-31-2018 23:05");
    EXPECT_EQ(timestampString("Europe/Berlin", winter), "02-01-2018 00:05");
    EXPECT_EQ(timestampString("Europe/Berlin", winter + days{180}), "07-31-2018 01:05");
    EXPECT_EQ(timestampString("America/St_Johns", winter), "01-31-2018 19:35");
    EXPECT_EQ(timestampString("Nowhere/Atall", winter), timestampString(std::nullopt, winter));
}

TEST(StringAdditions, knowCharactersOfAllScripts) {
    for (const char* empty : {"", " ", "\t\n\v\f\r", "\xC2\xA0", "\xE3\x80\x80 \xE2\x80\xA8\xC2\x85"}) {
        EXPECT_FALSE(isNotEmptyOrWhitespace(empty)) << empty;
    }
    for (const char* text : {"a", " a ", "\x01", "\xE3\x80\x80\xC3\xA4", "\xFF"}) {
        EXPECT_TRUE(isNotEmptyOrWhitespace(text)) << text;
    }
    EXPECT_EQ(stringByTrimmingCharactersInSet("\xC2\xA0 a b\n", whitespaceAndNewlineCharacterSet()), "a b");
    EXPECT_EQ(stringByTrimmingCharactersInSet(" \n", whitespaceAndNewlineCharacterSet()), "");
    const auto set = icu::UnicodeSet().add(0xE4).add('x').add(0x1F600);
    EXPECT_TRUE(containsCharactersFromSet("abcä", set));
    EXPECT_FALSE(containsCharactersFromSet("abcö\xC3", set));
    EXPECT_FALSE(containsCharactersFromSet("", set));
    EXPECT_EQ(stringByDeletingCharactersInSet("xaäöxx\U0001F600bx", set), "aöb");
}

TEST(KeyValueText, keepsEntriesOfExactlyTwoParts) {
    const auto quotes = icu::UnicodeSet(whitespaceAndNewlineCharacterSet()).add('"');
    EXPECT_EQ(dictionaryWithString(" a = 1 \r\nb=2\n\nno separator\nc=1=2\nb = 3", "="),
              (Texts{{"a", "1"}, {"b", "3"}}));
    EXPECT_EQ(dictionaryWithString("=\u2028k=", "="), (Texts{{"", ""}, {"k", ""}}));
    EXPECT_EQ(dictionaryWithString("a=1", ""), Texts{});
    EXPECT_EQ(dictionaryWithString("", "="), Texts{});
    EXPECT_EQ(
        dictionaryWithString("disabled = {\n\t\"a.b\" => true\n\t\"c\" => false\n}\n", "=>", "", quotes),
        (Texts{{"a.b", "true"}, {"c", "false"}}));
    EXPECT_EQ(dictionaryWithString("a:1;;b:2\n;;c", ":", ";;", quotes), (Texts{{"a", "1"}, {"b", "2"}}));
}

TEST(URLs, haveAQueryNameFilesAndAreReadBack) {
    EXPECT_EQ(queryArguments("app://host/path?a=1&b&c=&=d&e=f=g&a=%202#h?i=j"),
              (Texts{{"a", "%202"}, {"b", ""}, {"c", ""}, {"e", "f=g"}}));
    EXPECT_EQ(queryArguments("app:?="), (Texts{{"", ""}}));
    EXPECT_EQ(queryArguments("app://host/path#?a=1"), Texts{});
    EXPECT_EQ(fileURLWithPath("/a b/%#?ä.png"), "file:///a%20b/%25%23%3F%C3%A4.png");
    EXPECT_EQ(iconURLWithPath("/a/b@2x.png"), "OZIcon:///a/b@2x.png");
    EXPECT_EQ(iconURLWithPath("a.png"), std::nullopt);
    for (const char* path : {"/a b/%#?ä.png", "/%41", "/a:b//c", "/\xFF\n"}) {
        EXPECT_EQ(pathOfURL(fileURLWithPath(path)), path);
        EXPECT_EQ(pathOfURL(iconURLWithPath(path).value()), path);
    }
    std::string paths;
    for (const char* url : {"file:///Library/Icon.png", "file://localhost/Icon.png", "http://example.org",
                            "http://example.org/a.png?size=2#top", "/Icon.png", "Icon.png", "/1:2/a.png",
                            ":a", "file:///100%", "file:///a%2", "file:///a%+1b", ""}) {
        paths += pathOfURL(url).value_or("none") + " ";
    }
    EXPECT_EQ(paths, "/Library/Icon.png /Icon.png none /a.png /Icon.png Icon.png /1:2/a.png :a /100% /a%2"
                     " /a%+1b none ");
}

TEST(Safety, subarrayStaysWithinTheArray) {
    using Numbers = std::vector<int>;
    EXPECT_EQ(OZSafety_subarrayWithRange(Numbers{1, 2, 3}, 1, 1), Numbers{2});
    EXPECT_EQ(OZSafety_subarrayWithRange(Numbers{1, 2, 3}, 1, mostBytes), (Numbers{2, 3}));
    EXPECT_EQ(OZSafety_subarrayWithRange(Numbers{1, 2, 3}, 3, 1), Numbers{});
    EXPECT_EQ(OZSafety_subarrayWithRange(Numbers{1, 2, 3}, mostBytes, mostBytes), Numbers{});
}
