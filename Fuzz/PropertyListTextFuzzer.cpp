// Property lists in the text format: what is read can be written in it, and as XML, and reads as the same.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Platform/Formats/PropertyListTextFormat.h"
#include "Platform/Formats/TextScanner.h"

#include <variant>

#include <fmt/format.h>

using namespace platform;

namespace {

std::string textOf(const Value& value);

std::string quoted(const std::string& text) {
    std::string result = "\"";
    const auto units = icu::UnicodeString::fromUTF8(text);
    for (int32_t index = 0; index < units.length(); ++index) {
        result += fmt::format("\\U{:04x}", static_cast<unsigned>(units.charAt(index)));
    }
    return result + '"';
}

struct Writer {
    std::string operator()(const std::string& text) const { return quoted(text); }
    std::string operator()(const Data& data) const {
        std::string result = "<";
        for (const char byte : data.bytes) {
            result += fmt::format("{:02X} ", static_cast<unsigned char>(byte));
        }
        return result + '>';
    }
    std::string operator()(const Array& array) const {
        std::string result = "(";
        for (const Value& item : array) {
            result += textOf(item) + ',';
        }
        return result + ')';
    }
    std::string operator()(const Dictionary& dictionary) const {
        std::string result = "{";
        for (const auto& [key, item] : dictionary) {
            result += quoted(key) + '=' + textOf(item) + ';';
        }
        return result + '}';
    }
    std::string operator()(const auto& /*other*/) const {
        require(false); // the format has no other kinds
        return {};
    }
};

std::string textOf(const Value& value) {
    return std::visit(Writer{}, value.storage());
}

} // namespace

void readInput(std::string_view bytes) {
    auto text = decodeText(bytes);
    const auto value = text ? parseTextPropertyList(*std::move(text)) : std::nullopt;
    if (!value) {
        return;
    }
    require(value->as<Dictionary>() != nullptr || value->as<Array>() != nullptr);
    const auto written = decodeText(textOf(*value));
    require(written && parseTextPropertyList(*written) == value);
    require(parsePropertyList(serializePropertyList(*value, PropertyListFormat::xml)) == *value);
}
