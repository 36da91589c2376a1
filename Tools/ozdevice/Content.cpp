#include "Content.h"

#include "Platform/Files/Path.h"

#include "Platform/Formats/PropertyList.h"

#include <array>

namespace ozdevice {
namespace {

using namespace std::string_view_literals;

// Squares of 16 by 16 pixels in one colour each.
constexpr std::array images = {
    // Amber.
    std::string_view(
        "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x10\x00\x00\x00"
        "\x10\x08\x02\x00\x00\x00\x90\x91\x68\x36\x00\x00\x00\x16\x49\x44\x41\x54\x78\xda\x63\xf8\xb0"
        "\x4a\x83\x24\xc4\x30\xaa\x61\x54\xc3\xf0\xd5\x00\x00\x03\x7e\xc2\x10\xca\xd1\x57\xd3\x00\x00"
        "\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
        79),
    // Moss.
    std::string_view(
        "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x10\x00\x00\x00"
        "\x10\x08\x02\x00\x00\x00\x90\x91\x68\x36\x00\x00\x00\x16\x49\x44\x41\x54\x78\xda\x63\x88\xea"
        "\x71\x23\x09\x31\x8c\x6a\x18\xd5\x30\x7c\x35\x00\x00\x91\xf5\x2c\x10\x19\x44\x25\x35\x00\x00"
        "\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
        79),
    // Slate.
    std::string_view(
        "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x10\x00\x00\x00"
        "\x10\x08\x02\x00\x00\x00\x90\x91\x68\x36\x00\x00\x00\x16\x49\x44\x41\x54\x78\xda\x63\x70\x8b"
        "\xaa\x20\x09\x31\x8c\x6a\x18\xd5\x30\x7c\x35\x00\x00\xaa\x24\x18\x10\x86\x31\x7b\xbe\x00\x00"
        "\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
        79),
    // Coral.
    std::string_view(
        "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x10\x00\x00\x00"
        "\x10\x08\x02\x00\x00\x00\x90\x91\x68\x36\x00\x00\x00\x16\x49\x44\x41\x54\x78\xda\x63\x78\x96"
        "\x12\x45\x12\x62\x18\xd5\x30\xaa\x61\xf8\x6a\x00\x00\xd4\xbd\xa4\x10\x0a\x36\x30\x39\x00\x00"
        "\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
        79),
};

constexpr std::array vocabulary = {"alder"sv, "basin"sv,  "cinder"sv, "drift"sv,   "ember"sv, "fallow"sv,
                                   "grove"sv, "harbor"sv, "inlet"sv,  "juniper"sv, "kelp"sv,  "lantern"sv};

std::string bytes(std::string_view signature, Random& random) {
    std::string made(signature);
    const size_t length = 64 + random.below(900);
    while (made.size() < length) {
        made += static_cast<char>(random.below(256));
    }
    return made;
}

std::string propertyList(Random& random) {
    using platform::PropertyListFormat;
    const platform::Dictionary values{
        {"LastUsed", platform::Date{static_cast<double>(500000000 + random.below(40000000))}},
        {"LaunchCount", static_cast<int64_t>(random.below(500))},
        {"ShowsBadges", random.below(2) == 0},
        {"Token", random.uuid()},
    };
    return serializePropertyList(values,
                                 random.below(2) == 0 ? PropertyListFormat::xml : PropertyListFormat::binary);
}

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> choices) {
    for (const std::string_view choice : choices) {
        if (text == choice) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string_view smallImage(size_t number) {
    return images[number % images.size()];
}

std::string programImage(Random& random) {
    return bytes("\xcf\xfa\xed\xfe\x0c\x00\x00\x01"sv, random);
}

std::string words(Random& random) {
    std::string text;
    const size_t length = 32 + random.below(448);
    while (text.size() < length) {
        text += vocabulary[random.below(vocabulary.size())];
        text += random.below(9) == 0 ? '\n' : ' ';
    }
    return text + '\n';
}

std::string contentForPath(std::string_view path, Random& random) {
    const std::string_view name = platform::lastPathComponent(path);
    const size_t dot = name.rfind('.');
    const std::string_view extension = dot == std::string_view::npos ? "" : name.substr(dot + 1);
    if (extension == "png") {
        return std::string(smallImage(random.next()));
    }
    if (extension == "plist") {
        return propertyList(random);
    }
    if (extension == "strings") {
        return "\"OK\" = \"OK\";\n\"GREETING\" = \"" + std::string(vocabulary[random.below(12)]) + "\";\n";
    }
    if (isOneOf(extension, {"jpg", "jpeg", "JPG"})) {
        return bytes("\xff\xd8\xff\xe0\x00\x10JFIF\x00"sv, random);
    }
    if (isOneOf(extension, {"db", "sqlite", "sqlitedb"})) {
        return bytes("SQLite format 3\x00"sv, random);
    }
    if (extension == "dylib") {
        return programImage(random);
    }
    return words(random);
}

} // namespace ozdevice
