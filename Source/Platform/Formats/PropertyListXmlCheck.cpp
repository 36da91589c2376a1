#include "Platform/Formats/PropertyListCheck.h"
#include "Platform/Formats/UTF8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string>

#include <unicode/utf.h>

namespace platform {
namespace {

constexpr std::string_view whitespace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(whitespace);
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

template <class Number, class... Base>
bool isWhole(std::string_view text, Number& number, Base... base) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base...);
    return error == std::errc() && end == text.data() + text.size();
}

bool isInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    uint64_t number = 0;
    return isWhole(text, number, hexadecimal ? 16 : 10) &&
           (!negative || number <= uint64_t{1} + std::numeric_limits<int64_t>::max());
}

bool isReal(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double number = 0;
    return isWhole(text, number);
}

bool isDate(std::string_view text) {
    constexpr size_t longest = 32;
    if (text.size() > longest) {
        return false;
    }
    const std::string copy(text);
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int length = 0;
    std::sscanf(copy.c_str(), "%6d-%2d-%2dT%2d:%2d:%2dZ%n", &year, &month, &day, &hour, &minute, &second,
                &length);
    const auto within = [](int number, int low, int high) { return number >= low && number <= high; };
    return static_cast<size_t>(length) == copy.size() && within(month, 1, 12) && within(day, 1, 31) &&
           within(hour, 0, 23) && within(minute, 0, 59) && within(second, 0, 60);
}

bool isBase64(std::string_view text) {
    const auto isDigit = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
               c == '/';
    };
    size_t digits = 0;
    size_t padding = 0;
    for (const char c : text) {
        if (c == '=') {
            ++padding;
        } else if (isDigit(c) && padding == 0) {
            ++digits;
        } else if (!whitespace.contains(c)) {
            return false;
        }
    }
    return padding <= 2 && (digits + padding) % 4 == 0;
}

bool isReference(std::string_view name) {
    constexpr std::array<std::string_view, 5> known{"amp", "apos", "gt", "lt", "quot"};
    if (!name.starts_with('#')) {
        return std::ranges::find(known, name) != known.end();
    }
    name.remove_prefix(1);
    const bool hexadecimal = name.starts_with('x');
    uint32_t character = 0;
    return isWhole(name.substr(hexadecimal ? 1 : 0), character, hexadecimal ? 16 : 10) && character != 0 &&
           U_IS_UNICODE_CHAR(character);
}

bool isText(std::string_view text) {
    for (size_t at = text.find('&'); at != text.npos; at = text.find('&', at + 1)) {
        const size_t end = text.find(';', at);
        if (end == text.npos || !isReference(text.substr(at + 1, end - at - 1))) {
            return false;
        }
    }
    return true;
}

/// Reads the markup of one list from tag to tag.
class XmlCheck {
  public:
    XmlCheck(std::string_view bytes, size_t heldMemory)
        : _bytes(bytes)
        // The input, its text in the library's nodes, and in our values.
        , _memory(heldMemory + 3 * bytes.size()) {}

    std::optional<std::string_view> run() {
        do {
            const size_t next = _bytes.find('<', _position);
            if (next == _bytes.npos || !isText(_bytes.substr(_position, next - _position))) {
                return std::nullopt;
            }
            _position = next;
            if (!readMarkup()) {
                return std::nullopt;
            }
        } while (!_ended);
        return _bytes.substr(0, _position);
    }

  private:
    struct Element {
        std::string_view name;
        size_t content; // where its content begins
        size_t children = 0;
    };

    bool readMarkup() {
        const std::string_view rest = _bytes.substr(_position);
        if (rest.starts_with("<!--")) {
            return skip("-->");
        }
        if (rest.starts_with("<![CDATA[")) {
            return !_open.empty() && skip("]]>");
        }
        if (rest.starts_with("<?")) {
            return skip("?>");
        }
        if (rest.starts_with("<!")) {
            return readDocumentType();
        }
        return rest.starts_with("</") ? readEndTag() : readStartTag();
    }

    bool skip(std::string_view end) {
        const size_t found = _bytes.find(end, _position);
        _position = found + end.size();
        return found != _bytes.npos;
    }

    // The usual declaration names an external document, which nobody fetches. One that brings entities or
    // elements of its own has no place in a property list.
    bool readDocumentType() {
        const size_t end = _bytes.find_first_of("[>", _position);
        const bool external = _bytes.substr(_position).starts_with("<!DOCTYPE") && end != _bytes.npos &&
                              _bytes[end] == '>' && _open.empty();
        _position = end + 1;
        return external;
    }

    bool readStartTag() {
        const size_t end = _bytes.find_first_of("<>", _position + 1);
        if (end == _bytes.npos || _bytes[end] == '<') {
            return false;
        }
        const bool closed = _bytes[end - 1] == '/';
        std::string_view name = _bytes.substr(_position + 1, end - _position - (closed ? 2 : 1));
        name = name.substr(0, name.find_first_of(whitespace));
        _position = end + 1;
        _memory += propertyListNodeMemory;
        if (_memory > maximumPropertyListMemory || _open.size() == maximumPropertyListDepth ||
            !countChild(name)) {
            return false;
        }
        _open.push_back({name, _position});
        return !closed || close("");
    }

    // The library takes the first of several roots, and drops a key that another one follows, without a word.
    bool countChild(std::string_view name) {
        if (_open.empty()) {
            return true;
        }
        Element& parent = _open.back();
        ++parent.children;
        if (parent.name == "plist") {
            return parent.children == 1;
        }
        return parent.name != "dict" || (parent.children % 2 == 1) == (name == "key");
    }

    bool readEndTag() {
        const size_t end = _bytes.find('>', _position);
        if (end == _bytes.npos || _open.empty() ||
            trimmed(_bytes.substr(_position + 2, end - _position - 2)) != _open.back().name) {
            return false;
        }
        const std::string_view content =
            _bytes.substr(_open.back().content, _position - _open.back().content);
        _position = end + 1;
        return close(content);
    }

    bool close(std::string_view content) {
        const Element element = _open.back();
        _open.pop_back();
        _ended = _open.empty();
        return isWellFormed(element, content);
    }

    // The library makes 0 of a number that is none, and drops a key without a value.
    static bool isWellFormed(const Element& element, std::string_view content) {
        if (element.name == "integer") {
            return isInteger(trimmed(content));
        }
        if (element.name == "real") {
            return isReal(trimmed(content));
        }
        if (element.name == "date") {
            return isDate(trimmed(content));
        }
        if (element.name == "data") {
            return isBase64(content);
        }
        return element.name != "dict" || element.children % 2 == 0;
    }

    std::string_view _bytes;
    size_t _memory;
    size_t _position = 0;
    bool _ended = false;
    std::vector<Element> _open;
};

} // namespace

std::optional<std::string_view> checkXmlPropertyList(std::string_view bytes, size_t heldMemory) {
    if (bytes.size() > maximumPropertyListSize) {
        return std::nullopt;
    }
    const auto checked = XmlCheck(bytes, heldMemory).run();
    // A zero byte would end the input for the library.
    return checked && !checked->contains('\0') && isUTF8(*checked) ? checked : std::nullopt;
}

} // namespace platform
