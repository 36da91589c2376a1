#include "Categories/Text.h"

#include <algorithm>
#include <memory>

#include <fmt/format.h>
#include <unicode/timezone.h>

namespace {

size_t span(std::string_view text, const icu::UnicodeSet& set, USetSpanCondition condition) {
    return static_cast<size_t>(set.spanUTF8(text.data(), static_cast<int32_t>(text.size()), condition));
}

size_t spanBack(std::string_view text, const icu::UnicodeSet& set, USetSpanCondition condition) {
    return static_cast<size_t>(set.spanBackUTF8(text.data(), static_cast<int32_t>(text.size()), condition));
}

icu::UnicodeSet newlines() {
    icu::UnicodeSet set;
    set.add(0x0A, 0x0D).add(0x85).add(0x2028, 0x2029);
    return set;
}

icu::UnicodeSet blanksAndNewlines() {
    icu::UnicodeSet set = newlines();
    set.add(0x09).add(0x20).add(0xA0).add(0x1680).add(0x2000, 0x200A).add(0x202F).add(0x205F).add(0x3000);
    return set;
}

std::unique_ptr<icu::TimeZone> timeZoneNamed(const std::optional<std::string>& name) {
    if (name) {
        std::unique_ptr<icu::TimeZone> zone(
            icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(*name)));
        if (*zone != icu::TimeZone::getUnknown()) {
            return zone;
        }
    }
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault());
}

} // namespace

const icu::UnicodeSet& newlineCharacterSet() {
    static const icu::UnicodeSet set = newlines();
    return set;
}

const icu::UnicodeSet& whitespaceAndNewlineCharacterSet() {
    static const icu::UnicodeSet set = blanksAndNewlines();
    return set;
}

std::string timestampString(const std::optional<std::string>& timeZone,
                            std::chrono::system_clock::time_point moment) {
    using namespace std::chrono;
    const auto milliseconds = floor<std::chrono::milliseconds>(moment.time_since_epoch());
    int32_t zoneOffset = 0;
    int32_t summerOffset = 0;
    UErrorCode status = U_ZERO_ERROR;
    timeZoneNamed(timeZone)->getOffset(static_cast<UDate>(milliseconds.count()), 0, zoneOffset, summerOffset,
                                       status);
    const sys_time local(milliseconds + std::chrono::milliseconds(zoneOffset + summerOffset));
    const year_month_day date(floor<days>(local));
    const hh_mm_ss time(local - floor<days>(local));
    return fmt::format("{:02}-{:02}-{:04} {:02}:{:02}", unsigned{date.month()}, unsigned{date.day()},
                       int{date.year()}, time.hours().count(), time.minutes().count());
}

bool containsCharactersFromSet(std::string_view text, const icu::UnicodeSet& set) {
    return span(text, set, USET_SPAN_NOT_CONTAINED) < text.size();
}

bool isNotEmptyOrWhitespace(std::string_view text) {
    const auto isPlain = [](char c) { return c > ' ' || (c >= 0 && c < '\t') || (c > '\r' && c < ' '); };
    if (std::ranges::any_of(text, isPlain)) {
        return true;
    }
    return span(text, whitespaceAndNewlineCharacterSet(), USET_SPAN_CONTAINED) < text.size();
}

std::string stringByDeletingCharactersInSet(std::string_view text, const icu::UnicodeSet& set) {
    std::string rest;
    while (!text.empty()) {
        const size_t kept = span(text, set, USET_SPAN_NOT_CONTAINED);
        rest += text.substr(0, kept);
        text.remove_prefix(kept);
        text.remove_prefix(span(text, set, USET_SPAN_CONTAINED));
    }
    return rest;
}

std::string_view stringByTrimmingCharactersInSet(std::string_view text, const icu::UnicodeSet& set) {
    text.remove_prefix(span(text, set, USET_SPAN_CONTAINED));
    return text.substr(0, spanBack(text, set, USET_SPAN_CONTAINED));
}

std::string stringByEscapingForRegex(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        if (std::string_view("\\()[]{}*+?^$|").contains(character)) {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}
