#include "Platform/Formats/TextScanner.h"

#include "Platform/Formats/TextMark.h"
#include "Platform/Formats/UTF8.h"

#include <algorithm>
#include <limits>

#include <unicode/uchar.h>

namespace platform {

namespace {

using icu::UnicodeString;
using Text = std::expected<UnicodeString, TextError>;

Text decodeWide(std::string_view bytes, const MarkedEncoding& encoding) {
    if (bytes.size() % encoding.unitSize != 0) {
        return std::unexpected(TextError{0, "the file ends within a character"});
    }
    return UnicodeString(bytes.data(), static_cast<int32_t>(bytes.size()), encoding.name);
}

Text decodeUTF8(std::string_view bytes) {
    size_t line = 1;
    for (size_t begin = 0; begin < bytes.size(); ++line) {
        const size_t end = std::min(bytes.find('\n', begin), bytes.size());
        if (!isUTF8(bytes.substr(begin, end - begin))) {
            return std::unexpected(TextError{line, "the text is neither UTF-8 nor UTF-16"});
        }
        begin = end + 1;
    }
    return UnicodeString::fromUTF8({bytes.data(), static_cast<int32_t>(bytes.size())});
}

bool isBareCharacter(char16_t character) {
    return character < 0x80 && (u_isalnum(character) || std::u16string_view(u"_$/:.-").contains(character));
}

// Bytes that are written as octal numbers are in the encoding of the system that the format comes from.
char16_t characterOfByte(char16_t byte) {
    constexpr std::u16string_view upperHalf =
        u"\u00A0ÀÁÂÃÄÅÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖÙÚÛÜÝÞµ×÷©¡¢£⁄¥ƒ§¤’“«‹›ﬁﬂ®–†‡·¦¶•‚„”»…‰¬¿"
        u"¹ˋ´ˆ˜¯˘˙¨²˚¸³˝˛ˇ—±¼½¾àáâãäåçèéêëìÆíªîïðñŁØŒºòóôõöæùúûıüýłøœßþÿ\uFFFD\uFFFD";
    static_assert(upperHalf.size() == 0x80);
    return byte >= 0x80 && byte <= 0xFF ? upperHalf[byte - 0x80U] : byte;
}

} // namespace

Text decodeText(std::string_view bytes) {
    if (bytes.size() > size_t{std::numeric_limits<int32_t>::max() / 2}) {
        return std::unexpected(TextError{0, "the file is too large"});
    }
    const MarkedEncoding* const marked = encodingMarkedIn(bytes);
    if (marked != nullptr) {
        bytes.remove_prefix(marked->mark.size());
        return marked == &utf8Marked ? decodeUTF8(bytes) : decodeWide(bytes, *marked);
    }
    if (bytes.size() >= 2 && (bytes[0] == '\0') != (bytes[1] == '\0')) {
        return decodeWide(bytes, bytes[0] == '\0' ? utf16BigEndian : utf16LittleEndian);
    }
    return decodeUTF8(bytes);
}

std::string toUTF8(const UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

bool TextScanner::take(char16_t character) {
    const bool isNext = !atEnd() && peek() == character;
    _position += isNext ? 1 : 0;
    return isNext;
}

size_t TextScanner::lineAt(int32_t position) const {
    size_t line = 1;
    for (int32_t index = 0; index < position; ++index) {
        const char16_t character = _text.charAt(index);
        const bool isLineEnd = character == '\n' || (character == '\r' && _text.charAt(index + 1) != '\n');
        line += isLineEnd ? 1 : 0;
    }
    return line;
}

void TextScanner::fail(int32_t position, std::string reason) {
    _error = TextError{lineAt(position), std::move(reason)};
}

bool TextScanner::skipBlanks() {
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

bool TextScanner::takeSemicolon() {
    if (take(';')) {
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

std::optional<UnicodeString> TextScanner::string() {
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

std::optional<UnicodeString> TextScanner::quotedString(char16_t quote) {
    const int32_t begin = _position + 1;
    int32_t end = begin;
    while (end < _text.length() && _text.charAt(end) != quote) {
        end += _text.charAt(end) == '\\' ? 2 : 1;
    }
    if (end >= _text.length()) {
        fail(_position, "the text has no closing quotation mark");
        return std::nullopt;
    }
    // As much as it can take at most, since growing would hold it twice.
    UnicodeString content(end - begin, 0, 0);
    for (_position = begin; _position < end;) {
        const char16_t character = peek();
        ++_position;
        content.append(character == '\\' ? escapedCharacter() : character);
    }
    ++_position;
    return content;
}

char16_t TextScanner::escapedCharacter() {
    const char16_t character = peek();
    if (character >= '0' && character <= '7') {
        return characterOfByte(number(3, 8));
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

char16_t TextScanner::number(int maximalDigits, int8_t base) {
    int value = 0;
    for (int digits = 0; digits < maximalDigits && u_digit(peek(), base) >= 0; ++digits) {
        value = value * base + u_digit(peek(), base);
        ++_position;
    }
    return static_cast<char16_t>(value);
}

} // namespace platform
