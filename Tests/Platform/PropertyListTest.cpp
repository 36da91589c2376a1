// Binary property lists, damage and the memory that lists take. Tests/Scenarios/Platform/PropertyLists.txt
// tells the rest.

#include "Platform/Formats/PropertyList.h"

#include "Tests/Platform/PropertyListTexts.h"
#include "Tests/Support/Host.h"

#include <cmath>
#include <limits>

#include <malloc.h>
#include <sys/resource.h>

namespace {

using namespace platform;
using namespace std::string_literals;
using tests::encoded;
using tests::repeated;
using tests::xml;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr auto bothFormats = {PropertyListFormat::xml, PropertyListFormat::binary};

Result<Value> reread(const Value& value, PropertyListFormat format) {
    return parsePropertyList(serializePropertyList(value, format));
}

const Value sample = Dictionary{{"true", true},
                                {"negative", -5},
                                {"lowest", std::numeric_limits<int64_t>::min()},
                                {"highest", std::numeric_limits<uint64_t>::max()},
                                {"real", 0.1},
                                {"large", -1e300},
                                {"data", Data{"\0\xFF\0"s}},
                                {"empty", Data{}},
                                {"distant future", Date{63113904000.0}},
                                {"identifier", Uid{5}},
                                {"text <&> \xF0\x9F\x98\x80", " a\n<&>'\" \xC3\xA4 \xF0\x9F\x98\x80 "},
                                {"", ""},
                                {"array", Array{1, Array{}, Dictionary{}, Dictionary{{"a", Array{"b"}}}}}};

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
    return list + table + std::string(6, '\0') + "\4\4" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(list.size(), 8);
}

std::string arrayObject(const std::vector<uint64_t>& references) {
    std::string object = "\xAF\x12" + bigEndian(references.size(), 4);
    for (const uint64_t reference : references) {
        object += bigEndian(reference, 4);
    }
    return object;
}

constexpr size_t mebibyte = size_t{1} << 20;

/// Text or bytes that take so much.
std::string blobObject(char kind, size_t length, size_t bytes) {
    return kind + ("\x12" + bigEndian(length, 4)) + std::string(bytes, 'N');
}

std::string tagged(const std::string& tag, size_t mebibytes) {
    return "<" + tag + ">" + std::string(mebibytes * mebibyte, 'A') + "</" + tag + ">";
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
    return xml(repeated("<array>", depth) + repeated("</array>", depth));
}

TEST(PropertyList, KeepsEveryKindOfValueThroughBothFormats) {
    for (const auto format : bothFormats) {
        EXPECT_EQ(reread(sample, format), sample);
        EXPECT_EQ(reread("a\xE2\x82", format), Value("a\xEF\xBF\xBD")) << "broken text becomes readable";
    }
    const Value fractions = Array{Date{-100.25}, Date{-63114076800.5}, infinity};
    EXPECT_EQ(reread(fractions, PropertyListFormat::binary), fractions);
    const Value dates = Array{Date{-1e300}, Date{-63113904000.0}, Date{252423993599.0},
                              Date{1e12},   Date{infinity},       Date{std::nan("")}};
    const Value nearest = Array{Date{-63113904000.0}, Date{-63113904000.0}, Date{252423993599.0},
                                Date{252423993599.0}, Date{252423993599.0}, Date{0}};
    EXPECT_EQ(reread(dates, PropertyListFormat::xml), nearest) << "what text cannot hold";
}

TEST(PropertyList, ReadsBinaryListsOfOtherWriters) {
    // A small number of 128 bits, and a short real.
    EXPECT_EQ(parsePropertyList(binary({"\x14"s + std::string(15, '\0') + "\5"})), Value(5));
    EXPECT_EQ(parsePropertyList(binary({"\x22\x3F\x80\0\0"s})), Value(1.0));
    // Half a surrogate pair becomes the replacement character, and its neighbours stay.
    EXPECT_EQ(parsePropertyList(binary({"\x63\0A\xD8\x3D\0B"s})), Value("A\uFFFDB"));
}

TEST(PropertyList, RefusesMalformedAndTooDeepLists) {
    const std::string good = binary({"\x10\1"});
    std::string wildOffset = good;
    wildOffset[13] = '\x7F';
    std::string manyObjects = good;
    manyObjects.replace(good.size() - 24, 8, 8, '\xFF');
    const std::string wide = encoded(xml("<true/>"), "UTF-16LE");
    const std::vector<std::string> lists = {
        // A wild offset, a wild count, a cycle, no such object, a key that is no text, huge lengths.
        wildOffset, manyObjects, binary({arrayObject({1}), arrayObject({0})}), binary({arrayObject({9})}),
        binary({"\xD1"s + bigEndian(1, 4) + bigEndian(1, 4), "\x10\1"}),
        binary({"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}),
        binary({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), binary({"\x6F\x13\x80\0\0\0\0\0\0\1"s}),
        // A byte 0, no ASCII, a number of 128 bits, a null.
        binary({"\x53"s + "a\0b"s}), binary({"\x51\x80"}), binary({"\x14" + std::string(16, '\xFF')}),
        binary({"\0"s}),
        // Too deep, cut off, half a character.
        laughs(300, 1), nestedXml(100000), repeated("(", 100000), "{" + repeated("a = {", 300),
        repeated("(", 300) + repeated(")", 300), wide.substr(0, wide.size() - 8), wide + "\n"};
    for (const std::string& list : lists) {
        EXPECT_EQ(parsePropertyList(list).error(), std::errc::illegal_byte_sequence) << list.substr(0, 100);
    }
    for (const auto& list :
         {nestedXml(200), laughs(200, 1), repeated("(", 200) + repeated(")", 200), good, wide}) {
        EXPECT_TRUE(parsePropertyList(list));
    }
}

long peakKilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// Whether the peak of resident memory grows by no more while a child process reads the list.
bool staysWithin(long kilobytes, const std::string& bytes) {
    malloc_trim(0);
    const pid_t child = fork();
    if (child == 0) {
        const long before = peakKilobytes();
        std::ignore = parsePropertyList(bytes);
        _exit(peakKilobytes() - before <= kilobytes ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

TEST(PropertyList, TakesAtMost64MebibytesForOneList) {
    if (tests::sanitized) {
        GTEST_SKIP() << "a sanitizer takes memory of its own";
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
        nestedXml(1000000),
        xml("<array>" + repeated("<string>twenty characters...</string>", mebibyte / 7) + "</array>"),
        xml("<dict>" + keys + "</dict>"),
        xml(tagged("string", 15)),
        xml(tagged("data", 15)),
        xml(tagged("string", 40)),
        binary({blobObject('\x4F', 15 * mebibyte, 15 * mebibyte)}),
        binary({blobObject('\x5F', 15 * mebibyte, 15 * mebibyte)}),
        binary({blobObject('\x6F', 5 * mebibyte, 10 * mebibyte)}),
        binary({arrayObject(std::vector<uint64_t>(100, 1)), blobObject('\x4F', mebibyte, mebibyte)}),
        "(" + repeated("a,", mebibyte / 5) + ")",
        "(" + repeated("(),", mebibyte / 5) + ")",
        "{a=\"" + repeated("a", 7 * mebibyte) + "\";}",
        "{a=\"" + repeated("\xE4\xBD\xA0", 7 * mebibyte / 3) + "\";}",
        "{a=<" + repeated("a", 7 * mebibyte) + ">;}",
        encoded("\uFEFF" + xml(tagged("string", 5)), "UTF-16LE"),
        encoded("\uFEFF(" + repeated("aaaa,", mebibyte / 5) + ")", "UTF-32BE")};
    for (const std::string& list : lists) {
        const auto inputKilobytes = static_cast<long>(std::min<size_t>(list.size(), 16 * mebibyte) / 1024);
        EXPECT_TRUE(staysWithin(64 * 1024 - inputKilobytes, list)) << list.size();
    }
}

TEST(PropertyList, IsNoneIfItIsCutOffAnywhere) {
    const std::string written = serializePropertyList(sample, PropertyListFormat::xml);
    for (const std::string& good : {written.substr(0, written.rfind('>') + 1),
                                    serializePropertyList(sample, PropertyListFormat::binary),
                                    R"({ a = (b, "c \" \344"); /* d */ e = { f = <0a>; }; })"s}) {
        for (size_t length = 0; length < good.size(); ++length) {
            EXPECT_FALSE(parsePropertyList(std::string_view(good).substr(0, length))) << length;
        }
    }
}

TEST(PropertyList, NumbersConvertAsThePlatformDoes) {
    const struct {
        Value value;
        std::optional<uint64_t> number;
        std::optional<double> said;
    } rows[] = {{-1, ~uint64_t{0}, -1},
                {-1.9, ~uint64_t{0}, -1.9},
                {1e300, ~uint64_t{0}, 1e300},
                {2.9, 2, 2.9},
                {true, 1, 1},
                {5, 5, 5},
                {" 847.20 ", {}, 847.2},
                {"-1e3", {}, -1000},
                {"+5", {}, 5},
                {"1", {}, 1},
                {"", {}, {}},
                {"x", {}, {}},
                {"9.3.5", {}, {}},
                {"nan", {}, {}},
                {"1e999", {}, {}},
                {"inf", {}, {}},
                {Dictionary{}, {}, {}}};
    for (const auto& [value, number, said] : rows) {
        EXPECT_EQ(value.unsignedValue(), number);
        EXPECT_EQ(value.numberValue(), said);
    }
    EXPECT_EQ(Value(std::nan("")).unsignedValue(), 0U);
    EXPECT_EQ(Value(true).doubleValue(), 1.0);
    EXPECT_EQ(Value(0.5).boolValue(), true);
    EXPECT_FALSE(Value(Date{1}).isNumber());
}

} // namespace
