#include "Platform/Formats/StringsFile.h"

#include "Platform/Formats/PropertyList.h"

#include <gtest/gtest.h>
#include <unicode/unistr.h>

namespace {

using namespace platform;
using namespace std::string_literals;

std::string utf16(std::string_view text, bool bigEndian, bool withMark) {
    std::string bytes;
    const auto append = [&](char16_t unit) {
        const auto high = static_cast<char>(unit >> 8U);
        const auto low = static_cast<char>(unit & 0xFFU);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    };
    if (withMark) {
        append(0xFEFF);
    }
    const auto units = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    for (int32_t index = 0; index < units.length(); ++index) {
        append(units.charAt(index));
    }
    return bytes;
}

StringTable table(std::string_view bytes) {
    const auto parsed = parseStringsFile(bytes);
    EXPECT_TRUE(parsed) << parsed.error().line << ": " << parsed.error().reason;
    return parsed.value_or(StringTable{});
}

TEST(StringsFile, ReadsWhatThePlatformWrites) {
    struct Case {
        std::string bytes;
        StringTable expected;
    };
    const Case cases[] = {
        {"", {}},
        {"/* only a comment */ // and another", {}},
        {R"("YES" = "Yes";)", {{"YES", "Yes"}}},
        {"// head\r\n\"a\"=\"1\";/**/\"b\" /* x */ = // y\n \"2\" ;", {{"a", "1"}, {"b", "2"}}},
        {"path = /usr/bin;\nalone;", {{"path", "/usr/bin"}, {"alone", "alone"}}},
        {R"("a" = "// no /* comment */";)", {{"a", "// no /* comment */"}}},
        {R"("a" = 'it"s';)", {{"a", "it\"s"}}},
        {R"("a\"b" = "\n\t\"\\\'\q";)", {{"a\"b", "\n\t\"\\'q"}}},
        {R"("a" = "\U00e4\101\0502\Ud83d\Ude00";)", {{"a", "äA(2😀"}}},
        {"\"a\" = \"two\nlines\";", {{"a", "two\nlines"}}},
        {R"("a" = "1"; "a" = "2"; "" = "";)", {{"", ""}, {"a", "2"}}},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(table(bytes), expected) << bytes;
    }
}

TEST(StringsFile, ReadsEveryEncodingAndPropertyLists) {
    const std::string text = "\"Grüße\" = \"您好 😀\";\n";
    const StringTable expected{{"Grüße", "您好 😀"}};
    EXPECT_EQ(table(text), expected);
    EXPECT_EQ(table("\xEF\xBB\xBF" + text), expected);
    for (const bool bigEndian : {false, true}) {
        EXPECT_EQ(table(utf16(text, bigEndian, true)), expected);
        EXPECT_EQ(table(utf16(text, bigEndian, false)), expected);
    }
    const Dictionary list{{"Grüße", "您好 😀"}, {"no text", 5}};
    EXPECT_EQ(table(serializePropertyList(list, PropertyListFormat::binary)), expected);
    EXPECT_EQ(table(serializePropertyList(list, PropertyListFormat::xml)), expected);
}

TEST(StringsFile, NamesTheWrongLine) {
    struct Case {
        std::string bytes;
        size_t line;
    };
    const Case cases[] = {
        {"\"a\" = \"1\"\n\n\"b\" = \"2\";", 1},
        {"\"a\" = \"1\";\r\n\"b\" = ;\r\n", 2},
        {"\"a\" = \"1\";\n\"b = 2;\n\n", 2},
        {"\"a\" = \"1\";\n\n/* b", 3},
        {"\"a\" = \"1\";\r= \"2\";", 2},
        {"\"a\" = \"1\";\n\"b\" = \"\xFF\";", 2},
        {"\"a\" \"1\";", 1},
        {"\"a\" = \"1\\", 1},
        {"<plist version=\"1.0\"><dict><key>", 0},
        {"bplist00", 0},
        {"\"a\" = \"\\U", 1},
        {utf16("\"a\" = \"1\";", true, true) + "x", 0},
        {"<plist version=\"1.0\"><array/></plist>", 0},
    };
    for (const auto& [bytes, line] : cases) {
        const auto parsed = parseStringsFile(bytes);
        ASSERT_FALSE(parsed) << bytes;
        EXPECT_EQ(parsed.error().line, line) << bytes;
        EXPECT_FALSE(parsed.error().reason.empty()) << bytes;
    }
}

} // namespace
