#include "Platform/Formats/PropertyList.h"

#include "Tests/Platform/PropertyListTexts.h"
#include "Tests/Support/Sanitized.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace platform;
using namespace std::string_literals;
using tests::encoded;
using tests::repeated;
using tests::xml;

Value sample() {
    Dictionary dictionary;
    dictionary["true"] = true;
    dictionary["negative"] = -5;
    dictionary["lowest"] = std::numeric_limits<int64_t>::min();
    dictionary["highest"] = std::numeric_limits<uint64_t>::max();
    dictionary["real"] = 0.1;
    dictionary["large"] = -1e300;
    dictionary["data"] = Data{"\0\xFF\0"s};
    dictionary["empty"] = Data{};
    dictionary["distant future"] = Date{63113904000.0};
    dictionary["identifier"] = Uid{5};
    dictionary["text <&> \xF0\x9F\x98\x80"] = " a\n<&>'\" \xC3\xA4 \xF0\x9F\x98\x80 ";
    dictionary[""] = "";
    dictionary["array"] = Array{1, Array{}, Dictionary{}, Dictionary{{"a", Array{"b"}}}};
    return dictionary;
}

std::string bigEndian(uint64_t number, size_t size) {
    std::string bytes(size, '\0');
    for (; size > 0; number >>= 8U) {
        bytes[--size] = static_cast<char>(number & 0xFFU);
    }
    return bytes;
}

/// A binary list of the given objects, with the first as its root.
std::string binary(const std::vector<std::string>& objects) {
    std::string list = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(list.size(), 4);
        list += object;
    }
    const uint64_t tableOffset = list.size();
    return list + table + std::string(6, '\0') + "\4\4" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(tableOffset, 8);
}

std::string arrayObject(const std::vector<uint64_t>& references) {
    std::string object = "\xAF\x12" + bigEndian(references.size(), 4);
    for (const uint64_t reference : references) {
        object += bigEndian(reference, 4);
    }
    return object;
}

/// Every array refers to the next one `width` times; the last is a number.
std::string laughs(size_t levels, size_t width) {
    std::vector<std::string> objects;
    for (size_t level = 1; level <= levels; ++level) {
        objects.push_back(arrayObject(std::vector<uint64_t>(width, level)));
    }
    objects.emplace_back("\x10\1");
    return binary(objects);
}

std::string nestedXml(size_t depth) {
    std::string text;
    for (size_t i = 0; i < depth; ++i) {
        text += "<array>";
    }
    for (size_t i = 0; i < depth; ++i) {
        text += "</array>";
    }
    return xml(text);
}

TEST(PropertyList, KeepsEveryKindOfValueThroughBothFormats) {
    for (const auto format : {PropertyListFormat::xml, PropertyListFormat::binary}) {
        const auto parsed = parsePropertyList(serializePropertyList(sample(), format));
        ASSERT_TRUE(parsed);
        EXPECT_EQ(*parsed, sample());
    }
    const Value fraction =
        Array{Date{-100.25}, Date{-63114076800.5}, std::numeric_limits<double>::infinity()};
    EXPECT_EQ(parsePropertyList(serializePropertyList(fraction, PropertyListFormat::binary)), fraction);
}

TEST(PropertyList, DatesThatTextCannotHoldBecomeTheNearestThatItCan) {
    const Value dates = Array{Date{-1e300},
                              Date{-63113904000.0},
                              Date{252423993599.0},
                              Date{1e12},
                              Date{std::numeric_limits<double>::infinity()},
                              Date{std::nan("")}};
    const Value readable = Array{Date{-63113904000.0}, Date{-63113904000.0}, Date{252423993599.0},
                                 Date{252423993599.0}, Date{252423993599.0}, Date{0}};
    EXPECT_EQ(parsePropertyList(serializePropertyList(dates, PropertyListFormat::xml)), readable);
}

TEST(PropertyList, ReadsWhatOtherWritersMake) {
    EXPECT_EQ(
        parsePropertyList("\xEF\xBB\xBF" + xml("<!-- <a> --><string>a<![CDATA[<&>]]>&#x41;&lt;</string>")),
        Value("a<&>A<"));
    EXPECT_EQ(parsePropertyList("<dict><key>a</key><integer>0x10</integer></dict>\0junk"s),
              Value(Dictionary{{"a", 16}}));
    EXPECT_EQ(parsePropertyList(xml("<data>\n\tAAEC\n\tAw==\n</data>")), Value(Data{"\0\1\2\3"s}));
    // A small number of 128 bits, and a short real.
    EXPECT_EQ(parsePropertyList(binary({"\x14"s + std::string(15, '\0') + "\5"})), Value(5));
    EXPECT_EQ(parsePropertyList(binary({"\x22\x3F\x80\0\0"s})), Value(1.0));
    // Half a surrogate pair becomes the replacement character, and its neighbours stay.
    EXPECT_EQ(parsePropertyList(binary({"\x63\0A\xD8\x3D\0B"s})), Value("A\xEF\xBF\xBD"
                                                                        "B"));
}

TEST(PropertyList, WritesBrokenTextAsReadableText) {
    for (const auto format : {PropertyListFormat::xml, PropertyListFormat::binary}) {
        const auto parsed = parsePropertyList(serializePropertyList("a\xE2\x82", format));
        EXPECT_EQ(parsed, Value("a\xEF\xBF\xBD"));
    }
}

TEST(PropertyList, RefusesMalformedLists) {
    const std::string entities = "<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>";
    const std::string good = binary({"\x10\1"});
    std::string wildOffset = good;
    wildOffset[13] = '\x7F';
    std::string manyObjects = good;
    manyObjects.replace(good.size() - 24, 8, 8, '\xFF');
    const std::vector<std::string> lists = {
        "",
        " ",
        "bplist00",
        "<",
        entities + "<plist><string>&b;</string></plist>",
        xml("<string>&b;</string>"),
        xml("<string>a\0b</string>"s),
        xml("<string>a&#0;b</string>"),
        xml("<string>&#xD83D;</string>"),
        xml("<string>\xC3</string>"),
        xml("<string>a"),
        xml("<array><true/></dict>"),
        xml("<true/><false/>"),
        xml("<dict><key>a</key></dict>"),
        xml("<dict><key>a</key><key>b</key></dict>"),
        xml("<integer>ten</integer>"),
        xml("<integer>18446744073709551616</integer>"),
        xml("<real>1.5x</real>"),
        xml("<date>2001-13-01T00:00:00Z</date>"),
        xml("<data>!!</data>"),
        xml("<unknown/>"),
        xml(""),
        nestedXml(100000),
        wildOffset,
        manyObjects,
        binary({arrayObject({1}), arrayObject({0})}),                    // a cycle
        binary({arrayObject({9})}),                                      // no such object
        binary({"\xD1"s + bigEndian(1, 4) + bigEndian(1, 4), "\x10\1"}), // a key that is no text
        binary({"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}),            // huge lengths
        binary({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}),
        binary({"\x6F\x13\x80\0\0\0\0\0\0\1"s}),
        binary({"\x53"s + "a\0b"s}),
        binary({"\x51\x80"}),
        binary({"\x14" + std::string(16, '\xFF')}),
        binary({"\0"s}),
        laughs(300, 1), // too deep
    };
    for (const std::string& list : lists) {
        const auto parsed = parsePropertyList(list);
        ASSERT_FALSE(parsed) << list.substr(0, 100);
        EXPECT_EQ(parsed.error(), std::errc::illegal_byte_sequence);
    }
    EXPECT_TRUE(parsePropertyList(nestedXml(200)));
    EXPECT_TRUE(parsePropertyList(laughs(200, 1)));
}

long peakKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    long peak = -1;
    status >> peak;
    return peak;
}

/// How far the peak of resident memory grows while a child process reads the list.
long peakGrowthKilobytes(const std::string& bytes) {
    int channel[2];
    EXPECT_EQ(pipe(channel), 0);
    malloc_trim(0);
    const pid_t child = fork();
    if (child == 0) {
        std::ofstream reset("/proc/self/clear_refs");
        reset << 5 << std::flush; // the peak starts anew
        const long before = peakKilobytes();
        std::ignore = parsePropertyList(bytes);
        const long growth = !reset || before < 0 ? -1 : peakKilobytes() - before;
        _exit(write(channel[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
    }
    int status = 0;
    long growth = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(read(channel[0], &growth, sizeof growth), static_cast<ssize_t>(sizeof growth));
    close(channel[0]);
    close(channel[1]);
    return growth;
}

TEST(PropertyList, TakesAtMost64MebibytesForOneList) {
    if (tests::sanitized) {
        GTEST_SKIP() << "a sanitizer takes memory of its own";
    }
    constexpr size_t mebibyte = size_t{1} << 20;
    std::string manyStrings;
    while (manyStrings.size() < 5 * mebibyte) {
        manyStrings += "<string>twenty characters...</string>";
    }
    std::string keys;
    for (size_t i = 0; keys.size() < 4 * mebibyte; ++i) {
        keys += "<key>a key of some length " + std::to_string(i) + "</key><integer>1</integer>";
    }
    const std::vector<std::string> lists = {
        laughs(60, 10),
        laughs(17, 2),
        laughs(5, 11),
        laughs(2, 470),
        laughs(200, 1),
        xml("<array>" + manyStrings + "</array>"),
        nestedXml(1000000),
        xml("<dict>" + keys + "</dict>"),
        xml("<string>" + std::string(15 * mebibyte, 'a') + "</string>"),
        xml("<data>" + std::string(15 * mebibyte, 'A') + "</data>"),
        xml("<string>" + std::string(40 * mebibyte, 'a') + "</string>"),
        binary({"\x4F\x12" + bigEndian(15 * mebibyte, 4) + std::string(15 * mebibyte, 'a')}),
        binary({"\x5F\x12" + bigEndian(15 * mebibyte, 4) + std::string(15 * mebibyte, 'a')}),
        binary({"\x6F\x12" + bigEndian(5 * mebibyte, 4) + std::string(10 * mebibyte, '\x4E')}),
        binary({arrayObject(std::vector<uint64_t>(100, 1)),
                "\x4F\x12" + bigEndian(mebibyte, 4) + std::string(mebibyte, 'a')}),
        "(" + repeated("a,", mebibyte / 5) + ")",
        "(" + repeated("(),", mebibyte / 5) + ")",
        "{a=\"" + std::string(7 * mebibyte, 'a') + "\";}",
        "{a=\"" + repeated("\xE4\xBD\xA0", 7 * mebibyte / 3) + "\";}",
        "{a=<" + std::string(7 * mebibyte, 'a') + ">;}",
        encoded("\uFEFF" + xml("<string>" + std::string(5 * mebibyte, 'a') + "</string>"), "UTF-16LE"),
        encoded("\uFEFF(" + repeated("aaaa,", mebibyte / 5) + ")", "UTF-32BE"),
    };
    for (const std::string& list : lists) {
        const auto inputKilobytes = static_cast<long>(std::min<size_t>(list.size(), 16 * mebibyte) / 1024);
        const long growth = peakGrowthKilobytes(list);
        EXPECT_GE(growth, 0);
        EXPECT_LE(growth + inputKilobytes, 64 * 1024) << list.size();
    }
}

TEST(PropertyList, SurvivesTruncationAndMutation) {
    std::mt19937 random(20010101); // the same run every time
    const auto below = [&](size_t limit) {
        return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
    };
    for (const auto format : {PropertyListFormat::xml, PropertyListFormat::binary}) {
        const std::string good = serializePropertyList(sample(), format);
        const size_t end = format == PropertyListFormat::xml ? good.rfind('>') : good.size();
        for (size_t length = 0; length < end; ++length) {
            EXPECT_FALSE(parsePropertyList(std::string_view(good).substr(0, length))) << length;
        }
        for (int round = 0; round < 20000; ++round) {
            std::string bad = good;
            for (size_t edits = 1 + below(4); edits > 0; --edits) {
                bad[below(bad.size())] = static_cast<char>(below(256));
            }
            if (below(4) == 0) {
                bad.erase(below(bad.size()), below(20));
            }
            const auto parsed = parsePropertyList(bad);
            if (parsed) { // what was read can be written and read again
                EXPECT_TRUE(parsePropertyList(serializePropertyList(*parsed, PropertyListFormat::binary)));
            }
        }
    }
}

TEST(PropertyList, NumbersConvertAsThePlatformDoes) {
    EXPECT_EQ(Value(-1).unsignedValue(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(Value(-1.9).unsignedValue(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(Value(2.9).unsignedValue(), 2U);
    EXPECT_EQ(Value(1e300).unsignedValue(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(Value(std::nan("")).unsignedValue(), 0U);
    EXPECT_EQ(Value(true).doubleValue(), 1.0);
    EXPECT_EQ(Value(0.5).boolValue(), true);
    EXPECT_EQ(Value("1").unsignedValue(), std::nullopt);
    EXPECT_FALSE(Value(Date{1}).isNumber());
    const struct {
        Value value;
        std::optional<double> said;
    } rows[] = {{5, 5},      {true, 1},     {" 847.20 ", 847.2}, {"-1e3", -1000},
                {"+5", 5},   {"", {}},      {"x", {}},           {"9.3.5", {}},
                {"nan", {}}, {"1e999", {}}, {Dictionary{}, {}},  {"inf", {}}};
    for (const auto& [value, said] : rows) {
        EXPECT_EQ(value.numberValue(), said);
    }
}

} // namespace
