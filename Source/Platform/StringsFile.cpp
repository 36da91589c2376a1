#include "Platform/StringsFile.h"

#include "Platform/PropertyList.h"
#include "Platform/UTF8.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace platform {

namespace {

using icu::UnicodeString;
using Text = std::expected<UnicodeString, StringsFileError>;

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

Text decodeUTF8(std::string_view bytes) {
    size_t line = 1;
    for (size_t begin = 0; begin < bytes.size(); ++line) {
        const size_t end = std::min(bytes.find('\n', begin), bytes.size());
        if (!isUTF8(bytes.substr(begin, end - begin))) {
            return std::unexpected(StringsFileError{line, "the text is neither UTF-8 nor UTF-16"});
        }
        begin = end + 1;
    }
    return UnicodeString::fromUTF8({bytes.data(), static_cast<int32_t>(bytes.size())});
}

Text decodeUTF16(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 2 != 0) {
        return std::unexpected(StringsFileError{0, "the file ends within a UTF-16 character"});
    }
    UnicodeString text;
    for (size_t position = 0; position < bytes.size(); position += 2) {
        const auto first = static_cast<unsigned char>(bytes[position]);
        const auto second = static_cast<unsigned char>(bytes[position + 1]);
        text.append(static_cast<char16_t>(bigEndian ? first << 8U | second : second << 8U | first));
    }
    return text;
}

// A byte order mark decides; without one, a zero beside the first character tells UTF-16, since every table
// begins with an ASCII character.
Text decode(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return decodeUTF16(bytes.substr(2), false);
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return decodeUTF16(bytes.substr(2), true);
    }
    if (bytes.size() >= 2 && (bytes[0] == '\0') != (bytes[1] == '\0')) {
        return decodeUTF16(bytes, bytes[0] == '\0');
    }
    return decodeUTF8(bytes.starts_with(utf8Mark) ? bytes.substr(utf8Mark.size()) : bytes);
}

std::string toUTF8(const UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

bool isBareCharacter(char16_t character) {
    return character < 0x80 && (u_isalnum(character) || std::u16string_view(u"_$/:.-").contains(character));
}

class Parser {
  public:
    explicit Parser(UnicodeString text)
        : _text(std::move(text)) {}

    std::expected<StringTable, StringsFileError> parse() {
        StringTable table;
        while (skipBlanks() && !atEnd()) {
            const auto key = string();
            if (!key) {
                break;
            }
            // A key alone stands for itself.
            auto text = key;
            if (skipBlanks() && peek() == '=') {
                ++_position;
                text = skipBlanks() ? string() : std::nullopt;
            }
            if (!text || !skipBlanks() || !expectSemicolon()) {
                break;
            }
            table.insert_or_assign(toUTF8(*key), toUTF8(*text));
        }
        if (_error) {
            return std::unexpected(*_error);
        }
        return table;
    }

  private:
    [[nodiscard]] bool atEnd() const { return _position >= _text.length(); }
    // At the end, and at most there, it is 0xFFFF.
    [[nodiscard]] char16_t peek(int32_t ahead = 0) const { return _text.charAt(_position + ahead); }

    [[nodiscard]] size_t lineAt(int32_t position) const {
        size_t line = 1;
        for (int32_t index = 0; index < position; ++index) {
            const char16_t character = _text.charAt(index);
            const bool isLineEnd =
                character == '\n' || (character == '\r' && _text.charAt(index + 1) != '\n');
            line += isLineEnd ? 1 : 0;
        }
        return line;
    }

    void fail(int32_t position, std::string reason) {
        _error = StringsFileError{lineAt(position), std::move(reason)};
    }

    // White space and comments. False for a comment without an end.
    bool skipBlanks() {
        while (!atEnd()) {
            if (u_isUWhiteSpace(peek())) {
                ++_position;
            } else if (peek() == '/' && peek(1) == '/') {
                while (!atEnd() && peek() != '\n' && peek() != '\r') {
                    ++_position;
                }
            } else if (peek() == '/' && peek(1) == '*') {
                const int32_t end = _text.indexOf(UnicodeString(u"*/"), _position + 2);
                if (end < 0) {
                    fail(_position, "the comment has no end");
                    return false;
                }
                _position = end + 2;
            } else {
                break;
            }
        }
        return true;
    }

    bool expectSemicolon() {
        if (peek() == ';') {
            ++_position;
            return true;
        }
        // Where something is missing at a line's end, that line is the wrong one, not the next.
        int32_t position = _position;
        while (position > 0 && u_isUWhiteSpace(_text.charAt(position - 1))) {
            --position;
        }
        fail(position, "a \";\" is missing behind the text");
        return false;
    }

    std::optional<UnicodeString> string() {
        if (peek() == '"' || peek() == '\'') {
            return quotedString(peek());
        }
        const int32_t begin = _position;
        while (!atEnd() && isBareCharacter(peek())) {
            ++_position;
        }
        if (_position == begin) {
            fail(begin, "a text in double quotes is missing");
            return std::nullopt;
        }
        return _text.tempSubStringBetween(begin, _position);
    }

    std::optional<UnicodeString> quotedString(char16_t quote) {
        const int32_t begin = _position++;
        UnicodeString content;
        while (!atEnd()) {
            const char16_t character = peek();
            ++_position;
            if (character == quote) {
                return content;
            }
            content.append(character == '\\' && !atEnd() ? escapedCharacter() : character);
        }
        fail(begin, "the text has no closing quotation mark");
        return std::nullopt;
    }

    char16_t escapedCharacter() {
        const char16_t character = peek();
        if (character >= '0' && character <= '7') {
            return number(3, 8);
        }
        ++_position;
        switch (character) {
        case 'a':
            return '\a';
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'v':
            return '\v';
        case 'U':
            return number(4, 16);
        default:
            return character;
        }
    }

    char16_t number(int maximalDigits, int8_t base) {
        int value = 0;
        for (int digits = 0; digits < maximalDigits && u_digit(peek(), base) >= 0; ++digits) {
            value = value * base + u_digit(peek(), base);
            ++_position;
        }
        return static_cast<char16_t>(value);
    }

    UnicodeString _text;
    int32_t _position = 0;
    std::optional<StringsFileError> _error;
};

// No table of pairs begins with these.
bool isPropertyList(std::string_view bytes) {
    if (bytes.starts_with(utf8Mark)) {
        bytes.remove_prefix(utf8Mark.size());
    }
    const size_t start = bytes.find_first_not_of(" \t\r\n");
    return bytes.starts_with("bplist") || (start != std::string_view::npos && bytes[start] == '<');
}

std::expected<StringTable, StringsFileError> tableOfPropertyList(std::string_view bytes) {
    const auto value = parsePropertyList(bytes);
    const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
    if (dictionary == nullptr) {
        return std::unexpected(StringsFileError{0, "the property list is damaged or holds no dictionary"});
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

std::expected<StringTable, StringsFileError> parseStringsFile(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<int32_t>::max() / 2) {
        return std::unexpected(StringsFileError{0, "the file is too large"});
    }
    if (isPropertyList(bytes)) {
        return tableOfPropertyList(bytes);
    }
    auto text = decode(bytes);
    if (!text) {
        return std::unexpected(text.error());
    }
    return Parser(std::move(*text)).parse();
}

} // namespace platform
