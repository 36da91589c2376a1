#include "Platform/Formats/PropertyList.h"
#include "Tests/Platform/PropertyListTexts.h"

#include <sstream>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using namespace std::string_literals;
using tests::encoded;
using tests::repeated;

const char* const wideEncodings[] = {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"};
const std::string mark = "\xEF\xBB\xBF";

TEST(PropertyList, ReadsTheTextFormat) {
    const struct {
        std::string bytes;
        Value value;
    } rows[] = {
        {"{ Filter = { Bundles = ( \"com.a\", com.b-c_$/:.1 ); Mode = Any; }; }\n",
         Dictionary{{"Filter", Dictionary{{"Bundles", Array{"com.a", "com.b-c_$/:.1"}}, {"Mode", "Any"}}}}},
        {"// a filter\n{/**/a /* }*/=/*=*/1;//;\n}// the end", Dictionary{{"a", "1"}}},
        {"{ a = <0fbd77 1c2735\n00>; b = <>; c = <AF>; }",
         Dictionary{{"a", Data{"\x0F\xBD\x77\x1C\x27\x35\0"s}}, {"b", Data{}}, {"c", Data{"\xAF"}}}},
        {"({}, (), ((x,),),)", Array{Dictionary{}, Array{}, Array{Array{"x"}}}},
        {R"({ "a b" = "\n\t\"\\\101\331\U00e4\Ud83d\Ude00"; 'it"s' = 'it\'s'; "" = ""; })",
         Dictionary{{"a b", "\n\t\"\\Aää😀"}, {"it\"s", "it's"}, {"", ""}}},
        {"{ a = \"one\ntwo <plist><true/></plist>\"; }",
         Dictionary{{"a", "one\ntwo <plist><true/></plist>"}}},
        {"{ a = 1; a = 2; alone; }", Dictionary{{"a", "2"}, {"alone", "alone"}}},
        {"entry = { label = \"Größe\"; };\n\"b\" = c;\n",
         Dictionary{{"entry", Dictionary{{"label", "Größe"}}}, {"b", "c"}}},
        {R"({ half = "a\Ud83db"; })", Dictionary{{"half", "a\xEF\xBF\xBD"
                                                          "b"}}},
    };
    for (const auto& [bytes, value] : rows) {
        EXPECT_EQ(parsePropertyList(bytes), value) << bytes;
        EXPECT_EQ(parsePropertyList(mark + bytes), value) << bytes;
        for (const char* encoding : wideEncodings) {
            EXPECT_EQ(parsePropertyList(encoded("\uFEFF" + bytes, encoding)), value) << bytes << encoding;
        }
        EXPECT_EQ(parsePropertyList(encoded(bytes, "UTF-16LE")), value) << bytes;
        EXPECT_EQ(parsePropertyList(serializePropertyList(value, PropertyListFormat::xml)), value) << bytes;
    }
}

TEST(PropertyList, RefusesTextThatIsNoList) {
    const std::string whole = R"({ a = (b, "c \" \344"); /* d */ e = { f = <0a>; }; })";
    for (size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(parsePropertyList(whole.substr(0, length))) << length;
    }
    std::vector<std::string> lists{"{ a = \"\0\"; }"s,
                                   "{ a = \xC3; }",
                                   "\xFF\xFE{\0}"s,
                                   std::string(100000, '('),
                                   "{" + repeated("a = {", 300),
                                   std::string(300, '(') + std::string(300, ')')};
    std::istringstream lines(R"(not a list
alone;
"a"
<0a>
// a
a = 1
a = 1; b
{ a = 1 }
{ a 1; }
{ = 1; }
{ a = ; }
{ a = 1; } b
(a b)
(,)
(a,,b)
{ (a) = 1; }
{ a = <0>; }
{ a = <0g>; }
{ a = <0 0>; }
{ "a": 1 }
{ a = "\0"; }
{ "\U0000" = b; }
<?xml version="1.0"?>{ a = 1; }
bplist00{ a = 1; })");
    for (std::string line; std::getline(lines, line);) {
        lists.push_back(line);
    }
    for (const std::string& list : lists) {
        const auto parsed = parsePropertyList(list);
        ASSERT_FALSE(parsed) << list.substr(0, 100);
        EXPECT_EQ(parsed.error(), std::errc::illegal_byte_sequence);
    }
    EXPECT_TRUE(parsePropertyList(std::string(200, '(') + std::string(200, ')')));
}

TEST(PropertyList, ReadsXmlInWideEncodings) {
    const std::string list = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<plist version=\"1.0\"><dict>"
                             "<key>Größe 😀</key><integer>5</integer></dict></plist>\n";
    const Value value = Dictionary{{"Größe 😀", 5}};
    for (const char* encoding : wideEncodings) {
        EXPECT_EQ(parsePropertyList(encoded("\uFEFF" + list, encoding)), value) << encoding;
    }
    for (const char* encoding : {"UTF-16LE", "UTF-16BE"}) {
        const std::string bytes = encoded(list, encoding);
        EXPECT_EQ(parsePropertyList(bytes), value) << encoding;
        EXPECT_FALSE(parsePropertyList(bytes.substr(0, bytes.size() - 8))) << "the list is cut off";
        EXPECT_FALSE(parsePropertyList(bytes + "\n")) << "half a character";
    }
}

} // namespace
