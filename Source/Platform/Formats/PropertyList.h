#pragma once

#include "Platform/Files/Error.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class Value;
using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;

/// Bytes without a text's meaning.
struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

/// A moment, in seconds since 2001-01-01 00:00:00 UTC.
struct Date {
    double seconds = 0;
    bool operator==(const Date&) const = default;
};

/// A unique identifier of a keyed archive; carried through unchanged.
struct Uid {
    uint64_t number = 0;
    bool operator==(const Uid&) const = default;
};

/// One value of a property list. Text is UTF-8. Integers are signed unless they need the unsigned range.
class Value {
  public:
    using Storage =
        std::variant<bool, int64_t, uint64_t, double, std::string, Data, Date, Uid, Array, Dictionary>;

    Value()
        : _storage(Dictionary{}) {}
    Value(bool value)
        : _storage(value) {}
    Value(int value)
        : _storage(static_cast<int64_t>(value)) {}
    Value(int64_t value)
        : _storage(value) {}
    Value(uint64_t value)
        : _storage(value) {}
    Value(double value)
        : _storage(value) {}
    Value(const char* value)
        : _storage(std::string(value)) {}
    Value(std::string_view value)
        : _storage(std::string(value)) {}
    Value(std::string value)
        : _storage(std::move(value)) {}
    Value(Data value)
        : _storage(std::move(value)) {}
    Value(Date value)
        : _storage(value) {}
    Value(Uid value)
        : _storage(value) {}
    Value(Array value)
        : _storage(std::move(value)) {}
    Value(Dictionary value)
        : _storage(std::move(value)) {}

    /// The value if it has exactly this type, otherwise null.
    template <class T>
    [[nodiscard]] const T* as() const {
        return std::get_if<T>(&_storage);
    }
    template <class T>
    [[nodiscard]] T* as() {
        return std::get_if<T>(&_storage);
    }

    /// True for booleans, integers and reals: whatever answers to a number's operations.
    [[nodiscard]] bool isNumber() const;
    /// A number's value, converted as the platform does: reals are cut, negative values wrap. None for the
    /// rest.
    [[nodiscard]] std::optional<uint64_t> unsignedValue() const;
    [[nodiscard]] std::optional<double> doubleValue() const;
    /// A number is true when it is not 0. None for anything but a number.
    [[nodiscard]] std::optional<bool> boolValue() const;
    /// What a value says as a choice that somebody may have written by hand: a text is true when it begins
    /// with "Y", "T" or a digit but 0, in either case and behind space, signs and zeros. None for what is
    /// neither number nor text.
    [[nodiscard]] std::optional<bool> truthValue() const;
    /// What a value says as a number: text is one if nothing but a finite number stands in it, as in a list
    /// of the text format, which has no numbers. None for the rest.
    [[nodiscard]] std::optional<double> numberValue() const;

    [[nodiscard]] const Storage& storage() const { return _storage; }
    bool operator==(const Value&) const;

  private:
    Storage _storage;
};

/// Whether a text says yes, as `truthValue` reads it.
[[nodiscard]] bool truthOfText(std::string_view text);

/// The dictionary's value at a key if it is there with exactly this type, otherwise null.
template <class T>
const T* valueAt(const Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : found->second.as<T>();
}

enum class PropertyListFormat { xml, binary };

/// Reads a property list from untrusted bytes: binary, XML (UTF-8, UTF-16, UTF-32), or the old text format
/// (likewise), which gives texts, data, arrays and dictionaries alone, with an array or a dictionary around
/// them. Malformed, truncated, too deeply nested or oversized input (PropertyListCheck.h has the limits) is
/// an error (`std::errc::illegal_byte_sequence`), never a crash. Half a surrogate pair is read as the
/// replacement character.
[[nodiscard]] Result<Value> parsePropertyList(std::string_view bytes);

/// The bytes of a property list that `parsePropertyList` and the usual property-list tools read back. XML
/// holds whole seconds of a date only, and the years 1 to 9999: an earlier or later one becomes the first or
/// last. Bytes that are no UTF-8 become replacement characters. Throws AssertionFailure for text with a zero
/// byte, which no property list of the usual tools can hold.
[[nodiscard]] std::string serializePropertyList(const Value& value, PropertyListFormat format);

} // namespace platform
