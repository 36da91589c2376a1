#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

using platform::Array;
using platform::Dictionary;
using platform::Value;

/// Reads one value off the text.
class Reader {
  public:
    explicit Reader(std::string_view text)
        : _text(text) {}

    Value value() {
        skipBlanks();
        if (take('{')) {
            Dictionary dictionary;
            while (!isAtEndOf('}')) {
                std::string key = quoted();
                require(':');
                dictionary[key] = value();
            }
            return dictionary;
        }
        if (take('[')) {
            Array array;
            while (!isAtEndOf(']')) {
                array.push_back(value());
            }
            return array;
        }
        if (_text.starts_with('"')) {
            return quoted();
        }
        const std::string word(_text.substr(0, std::min(_text.find_first_of(",]} "), _text.size())));
        _text.remove_prefix(word.size());
        return ofWord(word);
    }

  private:
    static Value ofWord(const std::string& word) {
        if (word == "true" || word == "false") {
            return word == "true";
        }
        if (word.starts_with("data:")) {
            return platform::Data{unescaped(word.substr(5))};
        }
        if (word.starts_with("date:")) {
            return platform::Date{std::stod(word.substr(5))};
        }
        return word.contains('.') ? Value(std::stod(word)) : Value(int64_t{std::stoll(word)});
    }

    void skipBlanks() { _text.remove_prefix(std::min(_text.find_first_not_of(" ,"), _text.size())); }
    bool take(char mark) {
        skipBlanks();
        const bool isThere = _text.starts_with(mark);
        _text.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    void require(char mark) {
        if (!take(mark)) {
            throw std::runtime_error(fmt::format("no {} before {}", mark, _text));
        }
    }
    bool isAtEndOf(char mark) {
        if (_text.empty()) {
            throw std::runtime_error(fmt::format("no {} at the end", mark));
        }
        return take(mark);
    }
    std::string quoted() {
        require('"');
        size_t end = 0;
        while (end < _text.size() && _text[end] != '"') {
            end += _text[end] == '\\' ? 2 : 1;
        }
        const std::string text = unescaped(_text.substr(0, end));
        _text.remove_prefix(std::min(end + 1, _text.size()));
        return text;
    }

    std::string_view _text;
};

struct Writer {
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(int64_t value) const { return fmt::format("{}", value); }
    std::string operator()(uint64_t value) const { return fmt::format("{}", value); }
    std::string operator()(double value) const { return fmt::format("{:#.6g}", value); }
    std::string operator()(const std::string& value) const { return '"' + escaped(value) + '"'; }
    std::string operator()(const platform::Data& value) const { return "data:" + escaped(value.bytes); }
    std::string operator()(const platform::Date& value) const {
        return fmt::format("date:{}", value.seconds);
    }
    std::string operator()(const platform::Uid& value) const { return fmt::format("uid:{}", value.number); }
    std::string operator()(const Array& array) const {
        std::string text;
        for (const auto& value : array) {
            text += (text.empty() ? "" : ", ") + textOf(value);
        }
        return "[" + text + "]";
    }
    std::string operator()(const Dictionary& dictionary) const {
        std::string text;
        for (const auto& [key, value] : dictionary) {
            text += (text.empty() ? "" : ", ") + ('"' + escaped(key) + "\": ") + textOf(value);
        }
        return "{" + text + "}";
    }
};

} // namespace

std::string textOf(const Value& value) {
    return std::visit(Writer(), value.storage());
}

Value valueOf(std::string_view text) {
    return Reader(text).value();
}

} // namespace scenarios
