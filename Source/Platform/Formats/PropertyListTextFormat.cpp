#include "Platform/Formats/PropertyListTextFormat.h"

#include "Platform/Formats/PropertyListCheck.h"
#include "Platform/Formats/TextScanner.h"

#include <unicode/uchar.h>

namespace platform {
namespace {

using icu::UnicodeString;

/// Whether a key may stand for itself, without a value. Where there are no braces either, any word would be a
/// list.
enum class LoneKeys : bool { refused, allowed };

class TextListParser {
  public:
    explicit TextListParser(UnicodeString text)
        : _memory(static_cast<size_t>(text.length()) * memoryOfCharacter)
        , _scanner(std::move(text)) {}

    std::optional<Value> parse() {
        if (!_scanner.skipBlanks()) {
            return std::nullopt;
        }
        const bool isMarked = _scanner.peek() == '{' || _scanner.peek() == '(';
        auto list = isMarked ? value(1) : pairsWithoutBraces();
        return list && _scanner.skipBlanks() && _scanner.atEnd() ? std::move(list) : std::nullopt;
    }

  private:
    // The text itself, a copy while it is unquoted and grows, and the value.
    static constexpr size_t memoryOfCharacter = 8;

    std::optional<Value> value(size_t depth) {
        if (depth > maximumPropertyListDepth || !charge()) {
            return std::nullopt;
        }
        switch (_scanner.peek()) {
        case '{':
            return dictionary(depth);
        case '(':
            return array(depth);
        case '<':
            return data();
        default:
            return text();
        }
    }

    bool charge() {
        _memory += propertyListNodeMemory;
        return _memory <= maximumPropertyListMemory;
    }

    std::optional<std::string> text() {
        const auto string = _scanner.string();
        return string && string->indexOf(char16_t{0}) < 0 ? std::optional(toUTF8(*string)) : std::nullopt;
    }

    std::optional<Value> dictionary(size_t depth) {
        _scanner.advance();
        auto content = pairs(depth + 1, LoneKeys::allowed);
        return content && _scanner.take('}') ? std::optional<Value>(*std::move(content)) : std::nullopt;
    }

    std::optional<Value> pairsWithoutBraces() {
        auto content = pairs(1, LoneKeys::refused);
        return content && !content->empty() ? std::optional<Value>(*std::move(content)) : std::nullopt;
    }

    /// Up to what is no key; what may follow is the caller's to know.
    std::optional<Dictionary> pairs(size_t depth, LoneKeys loneKeys) {
        Dictionary dictionary;
        while (_scanner.skipBlanks() && !_scanner.atEnd() && _scanner.peek() != '}') {
            auto key = charge() ? text() : std::nullopt;
            if (!key || !_scanner.skipBlanks()) {
                return std::nullopt;
            }
            std::optional<Value> content;
            if (_scanner.take('=')) {
                content = _scanner.skipBlanks() ? value(depth) : std::nullopt;
            } else if (loneKeys == LoneKeys::allowed) {
                content = *key;
            }
            if (!content || !_scanner.skipBlanks() || !_scanner.takeSemicolon()) {
                return std::nullopt;
            }
            dictionary.insert_or_assign(*std::move(key), *std::move(content));
        }
        return dictionary;
    }

    std::optional<Value> array(size_t depth) {
        _scanner.advance();
        Array array;
        // A comma may also stand behind the last value.
        for (bool separated = true; _scanner.skipBlanks() && !_scanner.take(')');) {
            auto item = separated ? value(depth + 1) : std::nullopt;
            if (!item || !_scanner.skipBlanks()) {
                return std::nullopt;
            }
            array.push_back(*std::move(item));
            separated = _scanner.take(',');
        }
        return _scanner.error() ? std::nullopt : std::optional<Value>(std::move(array));
    }

    /// Pairs of hexadecimal digits, with space between them.
    std::optional<Value> data() {
        constexpr int8_t base = 16;
        Data data;
        for (_scanner.advance(); !_scanner.take('>');) {
            if (u_isUWhiteSpace(_scanner.peek())) {
                _scanner.advance();
                continue;
            }
            const int32_t high = u_digit(_scanner.peek(), base);
            const int32_t low = u_digit(_scanner.peek(1), base);
            if (high < 0 || low < 0) {
                return std::nullopt;
            }
            data.bytes += static_cast<char>(high * base + low);
            _scanner.advance();
            _scanner.advance();
        }
        return data;
    }

    size_t _memory;
    TextScanner _scanner;
};

} // namespace

std::optional<Value> parseTextPropertyList(UnicodeString text) {
    return TextListParser(std::move(text)).parse();
}

} // namespace platform
