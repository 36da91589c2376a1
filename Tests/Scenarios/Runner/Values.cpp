#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

using platform::Array;
using platform::Dictionary;
using platform::Value;

/// Takes a mark off the text if it is the next one.
bool take(std::string_view& text, char mark) {
    text.remove_prefix(std::min(text.find_first_not_of(" ,"), text.size()));
    const bool isNext = text.starts_with(mark);
    text.remove_prefix(isNext ? 1 : 0);
    return isNext;
}

/// Takes one value off the text.
Value read(std::string_view& text) {
    if (take(text, '{')) {
        Dictionary dictionary;
        while (!take(text, '}')) {
            const std::string key = takeWord(text);
            if (!take(text, ':')) {
                throw std::runtime_error("no value of " + key);
            }
            dictionary[key] = read(text);
        }
        return dictionary;
    }
    if (take(text, '[')) {
        Array array;
        while (!take(text, ']')) {
            array.push_back(read(text));
        }
        return array;
    }
    if (text.starts_with('"')) {
        return takeWord(text);
    }
    const std::string word(text.substr(0, text.find_first_of(",]} ")));
    text.remove_prefix(word.size());
    return word.empty()                ? throw std::runtime_error("no value")
           : word == "true"            ? Value(true)
           : word == "false"           ? Value(false)
           : word.starts_with("data:") ? Value(platform::Data{unescaped(word.substr(5))})
           : word.starts_with("date:") ? Value(platform::Date{std::stod(word.substr(5))})
           : word.contains('.')        ? Value(std::stod(word))
                                       : Value(int64_t{std::stoll(word)});
}

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
    return read(text);
}

} // namespace scenarios
