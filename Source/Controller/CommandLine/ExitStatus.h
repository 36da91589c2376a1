#pragma once

/// What the process tells at its end whoever has started it.
namespace exitstatus {

inline constexpr int success = 0;
/// Nothing was done, or, with --strict, not all of it; standard error tells why.
inline constexpr int failure = 1;
/// Nothing was done, since the device's tree cannot be written.
inline constexpr int cannotWrite = 73;

} // namespace exitstatus
