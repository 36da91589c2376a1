#include "Platform/Formats/PropertyList.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>

namespace platform {
namespace {

// A real is cut to an integer; one that no integer holds becomes the nearest that does.
uint64_t unsignedOfReal(double real) {
    constexpr double twoTo63 = 0x1p63;
    if (std::isnan(real)) {
        return 0;
    }
    if (real >= twoTo63) {
        return real >= 2 * twoTo63 ? std::numeric_limits<uint64_t>::max() : static_cast<uint64_t>(real);
    }
    const bool lowest = real <= -twoTo63;
    return static_cast<uint64_t>(lowest ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(real));
}

template <class Number, class Conversion>
std::optional<Number> convertNumber(const Value::Storage& storage, Conversion convert) {
    return std::visit(
        [&](const auto& stored) -> std::optional<Number> {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(stored)>>) {
                return convert(stored);
            } else {
                return std::nullopt;
            }
        },
        storage);
}

} // namespace

bool Value::isNumber() const {
    return doubleValue().has_value();
}

std::optional<uint64_t> Value::unsignedValue() const {
    return convertNumber<uint64_t>(_storage, [](auto number) {
        if constexpr (std::is_floating_point_v<decltype(number)>) {
            return unsignedOfReal(number);
        } else {
            return static_cast<uint64_t>(number);
        }
    });
}

std::optional<double> Value::doubleValue() const {
    return convertNumber<double>(_storage, [](auto number) { return static_cast<double>(number); });
}

std::optional<bool> Value::boolValue() const {
    return convertNumber<bool>(_storage, [](auto number) { return number != 0; });
}

std::optional<bool> Value::truthValue() const {
    const auto* text = as<std::string>();
    return text == nullptr ? boolValue() : std::optional(truthOfText(*text));
}

bool truthOfText(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\n\r+-0");
    return first != std::string_view::npos && std::string_view("YyTt123456789").contains(text[first]);
}

bool Value::operator==(const Value& other) const {
    return _storage == other._storage;
}

std::optional<double> Value::numberValue() const {
    const auto* text = as<std::string>();
    if (text == nullptr) {
        return doubleValue();
    }
    constexpr std::string_view blanks = " \t\n\r";
    const size_t first = text->find_first_not_of(blanks);
    if (first == std::string::npos) {
        return std::nullopt;
    }
    const char* begin = text->data() + first + ((*text)[first] == '+' ? 1 : 0);
    const char* const end = text->data() + text->find_last_not_of(blanks) + 1;
    double number = 0;
    const auto [rest, error] = std::from_chars(begin, end, number);
    return error == std::errc() && rest == end && std::isfinite(number) ? std::optional(number)
                                                                        : std::nullopt;
}

} // namespace platform
