#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Sizes as text: "1.50 KiB". Grouping and the decimal mark follow a locale.

/// The locale that numbers are shown in, from LC_ALL, LC_NUMERIC or LANG; "en_US" where these name none.
[[nodiscard]] std::string localeFromEnvironment();

/// How a size is shown.
struct ByteFormat {
    /// Exactly this many digits stand behind the decimal mark.
    unsigned fractionalDigits = 2;
    /// 0 picks by the size; 1 forces bytes, 2 KiB, 3 MiB, 4 GiB.
    unsigned unit = 0;
    bool printUnit = true;
    /// Such as "de_DE"; none means that of the environment.
    std::optional<std::string> locale;
};

/// Throws platform::Exception ("NSRangeException") where a unit behind GiB is to be printed: for 1024 GiB and
/// more, or a unit above 4.
[[nodiscard]] std::string humanReadableStringFromBytes(uint64_t bytes, const ByteFormat& format = {});

/// The unit to ask for where any size may come: GiB for those that have none of their own, else the one that
/// suits the size.
[[nodiscard]] constexpr unsigned unitForAnySize(uint64_t bytes) {
    constexpr uint64_t tebibyte = uint64_t{1} << 40U;
    return bytes < tebibyte ? 0 : 4;
}
