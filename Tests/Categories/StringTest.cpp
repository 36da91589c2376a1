#include "Categories/ByteText.h"
#include "Categories/Text.h"
#include "Platform/Files/Error.h"

#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

namespace {

std::string readable(uint64_t bytes, unsigned digits = 2, unsigned unit = 0, bool printUnit = true,
                     const char* locale = "en_US") {
    return humanReadableStringFromBytes(
        bytes, {.fractionalDigits = digits, .unit = unit, .printUnit = printUnit, .locale = locale});
}

TEST(ByteFormatter, PicksTheUnitBySize) {
    constexpr uint64_t gibibyte = uint64_t{1} << 30;
    EXPECT_EQ(readable(0), "0.00 B");
    EXPECT_EQ(readable(1023), "1,023.00 B");
    EXPECT_EQ(readable(1024), "1.00 KiB");
    EXPECT_EQ(readable(1024 * 1024), "1.00 MiB");
    EXPECT_EQ(readable(1024 * 1024 - 1), "1,024.00 KiB");
    EXPECT_EQ(readable(1023 * gibibyte), "1,023.00 GiB");
    EXPECT_EQ(readable(1536, 0), "2 KiB");
    EXPECT_EQ(readable(2560, 0), "2 KiB"); // a half goes to the even neighbour
}

TEST(ByteFormatter, ForcesAUnit) {
    EXPECT_EQ(readable(1 << 20, 2, 1), "1,048,576.00 B");
    EXPECT_EQ(readable(1 << 20, 0, 2), "1,024 KiB");
    EXPECT_EQ(readable(1 << 20, 1, 3), "1.0 MiB");
    EXPECT_EQ(readable(1 << 20, 4, 4), "0.0010 GiB");
}

TEST(ByteFormatter, HasNoUnitBeyondGibibytes) {
    constexpr uint64_t tebibyte = uint64_t{1} << 40;
    for (const auto& [bytes, unit] : {std::pair{tebibyte, 0U}, {uint64_t{5}, 5U}, {uint64_t{5}, 99U}}) {
        try {
            readable(bytes, 2, unit);
            ADD_FAILURE() << bytes;
        } catch (const platform::Exception& exception) {
            EXPECT_EQ(exception.name(), "NSRangeException");
        }
    }
    EXPECT_EQ(readable(tebibyte, 2, 0, false), "1.00");
    EXPECT_EQ(readable(std::numeric_limits<uint64_t>::max(), 0, 0, false), "16,777,216");
}

TEST(ByteFormatter, FollowsTheLocale) {
    EXPECT_EQ(readable(1023, 2, 0, true, "de_DE.UTF-8"), "1.023,00 B");
    EXPECT_EQ(readable(1023, 2, 0, true, "no such locale"), "1,023.00 B");
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

TEST(Timestamp, ShowsTheMomentInTheDevicesZone) {
    const std::chrono::system_clock::time_point winter =
        std::chrono::sys_days{std::chrono::year{2018} / 1 / 31} + std::chrono::hours{23} +
        std::chrono::minutes{5};
    const auto summer = winter + std::chrono::days{180};
    EXPECT_EQ(timestampString("UTC", winter), "01-31-2018 23:05");
    EXPECT_EQ(timestampString("Europe/Berlin", winter), "02-01-2018 00:05");
    EXPECT_EQ(timestampString("Europe/Berlin", summer), "07-31-2018 01:05");
    EXPECT_EQ(timestampString("America/St_Johns", winter), "01-31-2018 19:35");
    EXPECT_EQ(timestampString("Nowhere/Atall", winter), timestampString(std::nullopt, winter));
}

TEST(StringAdditions, KnowWhiteSpaceOfAllScripts) {
    for (const char* empty : {"", " ", "\t\n\v\f\r", "\xC2\xA0", "\xE3\x80\x80 \xE2\x80\xA8\xC2\x85"}) {
        EXPECT_FALSE(isNotEmptyOrWhitespace(empty)) << empty;
    }
    for (const char* text : {"a", " a ", "\x01", "\xE3\x80\x80\xC3\xA4", "\xFF"}) {
        EXPECT_TRUE(isNotEmptyOrWhitespace(text)) << text;
    }
    EXPECT_EQ(stringByTrimmingCharactersInSet("\xC2\xA0 a b\n", whitespaceAndNewlineCharacterSet()), "a b");
    EXPECT_EQ(stringByTrimmingCharactersInSet(" \n", whitespaceAndNewlineCharacterSet()), "");
}

TEST(StringAdditions, FindAndDeleteCharacters) {
    icu::UnicodeSet set;
    set.add(0xE4).add('x').add(0x1F600);
    EXPECT_TRUE(containsCharactersFromSet("abc\xC3\xA4", set));
    EXPECT_FALSE(containsCharactersFromSet("abc\xC3\xB6\xC3", set));
    EXPECT_FALSE(containsCharactersFromSet("", set));
    EXPECT_EQ(stringByDeletingCharactersInSet("xa\xC3\xA4\xC3\xB6xx\xF0\x9F\x98\x80"
                                              "bx",
                                              set),
              "a\xC3\xB6"
              "b");
}

} // namespace
