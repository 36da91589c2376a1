#include "Platform/Formats/StringsFile.h"

#include "Platform/Formats/PropertyList.h"
#include "Platform/Formats/TextMark.h"
#include "Platform/Formats/TextScanner.h"

namespace platform {

namespace {

using Table = std::expected<StringTable, TextError>;

Table tableOfPairs(icu::UnicodeString text) {
    TextScanner scanner(std::move(text));
    StringTable table;
    while (scanner.skipBlanks() && !scanner.atEnd()) {
        const auto key = scanner.string();
        if (!key || !scanner.skipBlanks()) {
            break;
        }
        // A key alone stands for itself.
        auto value = key;
        if (scanner.take('=')) {
            value = scanner.skipBlanks() ? scanner.string() : std::nullopt;
        }
        if (!value || !scanner.skipBlanks() || !scanner.takeSemicolon()) {
            break;
        }
        table.insert_or_assign(toUTF8(*key), toUTF8(*value));
    }
    return scanner.error() ? Table(std::unexpect, *scanner.error()) : table;
}

// No table of pairs begins with these.
bool isPropertyList(std::string_view bytes) {
    bytes = withoutUTF8Mark(bytes);
    const size_t start = bytes.find_first_not_of(" \t\r\n");
    return bytes.starts_with("bplist") || (start != std::string_view::npos && bytes[start] == '<');
}

Table tableOfPropertyList(std::string_view bytes) {
    const auto value = parsePropertyList(bytes);
    const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
    if (dictionary == nullptr) {
        return std::unexpected(TextError{0, "the property list is damaged or holds no dictionary"});
    }
    StringTable table;
    for (const auto& [key, text] : *dictionary) {
        if (const auto* string = text.as<std::string>()) {
            table.emplace(key, *string);
        }
    }
    return table;
}

} // namespace

std::expected<StringTable, TextError> parseStringsFile(std::string_view bytes) {
    if (isPropertyList(bytes)) {
        return tableOfPropertyList(bytes);
    }
    auto text = decodeText(bytes);
    if (!text) {
        return std::unexpected(text.error());
    }
    return tableOfPairs(*std::move(text));
}

} // namespace platform
