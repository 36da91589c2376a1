#pragma once

#include "Platform/Formats/TextError.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/unistr.h>

namespace platform {

/// The text of a file in UTF-8, UTF-16 or UTF-32. A byte order mark decides; without one, a zero beside the
/// first character tells UTF-16, since all that is read this way begins with an ASCII character. What is half
/// a character in UTF-16 or UTF-32 becomes a replacement character; a text that ends within one is an error.
[[nodiscard]] std::expected<icu::UnicodeString, TextError> decodeText(std::string_view bytes);

[[nodiscard]] std::string toUTF8(const icu::UnicodeString& text);

/// Walks the words of a text in the platform's old format for tables and property lists. The first fault is
/// kept.
class TextScanner {
  public:
    explicit TextScanner(icu::UnicodeString text)
        : _text(std::move(text)) {}

    [[nodiscard]] bool atEnd() const { return _position >= _text.length(); }
    /// At the end, and at most there, it is 0xFFFF.
    [[nodiscard]] char16_t peek(int32_t ahead = 0) const { return _text.charAt(_position + ahead); }
    void advance() { ++_position; }
    /// Goes on if this is the next character. It is no fault if not.
    bool take(char16_t character);

    /// White space and comments. False for a comment without an end.
    bool skipBlanks();
    /// False, and a fault in the line that lacks it, if the next character is none.
    bool takeSemicolon();
    /// A text in quotes, without these, or a word of the characters that need none. It may be half a
    /// surrogate pair, or hold a zero, where the file says so.
    std::optional<icu::UnicodeString> string();

    [[nodiscard]] const std::optional<TextError>& error() const { return _error; }

  private:
    void fail(int32_t position, std::string reason);
    [[nodiscard]] size_t lineAt(int32_t position) const;
    std::optional<icu::UnicodeString> quotedString(char16_t quote);
    char16_t escapedCharacter();
    char16_t number(int maximalDigits, int8_t base);

    icu::UnicodeString _text;
    int32_t _position = 0;
    std::optional<TextError> _error;
};

} // namespace platform
