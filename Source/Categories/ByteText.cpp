#include "Categories/ByteText.h"

#include "Platform/Files/Error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include <fmt/format.h>
#include <unicode/numberformatter.h>

namespace {

constexpr std::array<std::string_view, 4> units{"B", "KiB", "MiB", "GiB"};

std::string decimalString(double value, unsigned fractionalDigits, const std::string& locale) {
    using icu::number::LocalizedNumberFormatter;
    using icu::number::NumberFormatter;
    using icu::number::Precision;
    // Making a formatter reads the locale's data, so the last one is kept.
    struct Kept {
        std::string locale;
        LocalizedNumberFormatter formatter;
    };
    thread_local std::optional<Kept> kept;
    if (!kept || kept->locale != locale) {
        kept.emplace(locale, NumberFormatter::withLocale(icu::Locale::createCanonical(locale.c_str())));
    }
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    kept->formatter.precision(Precision::fixedFraction(static_cast<int32_t>(fractionalDigits)))
        .formatDouble(value, status)
        .toString(status)
        .toUTF8String(text);
    return U_SUCCESS(status) ? text : fmt::format("{:.{}f}", value, fractionalDigits);
}

} // namespace

std::string localeFromEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        const std::string_view locale = value;
        const std::string_view language = locale.substr(0, locale.find('.'));
        return language == "C" || language == "POSIX" ? "en_US" : value;
    }
    return "en_US";
}

std::string humanReadableStringFromBytes(uint64_t bytes, const ByteFormat& format) {
    auto value = static_cast<double>(bytes);
    size_t index = 0;
    // Both limits lie one behind the last unit: what is too large for GiB still has a number, but no unit.
    if (format.unit != 0) {
        index = std::min<size_t>(format.unit - 1, units.size());
        value /= std::pow(1024.0, static_cast<double>(index));
    } else {
        for (; value >= 1024.0 && index < units.size(); ++index) {
            value /= 1024.0;
        }
    }
    std::string text = decimalString(value, format.fractionalDigits,
                                     format.locale ? *format.locale : localeFromEnvironment());
    if (!format.printUnit) {
        return text;
    }
    if (index >= units.size()) {
        throw platform::Exception("NSRangeException",
                                  fmt::format("index {} beyond bounds [0 .. {}]", index, units.size() - 1));
    }
    return text + " " + std::string(units[index]);
}
