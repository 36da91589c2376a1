#pragma once

/// The platform's versions by their `NSFoundationVersionNumber`, as what differs between them compares it.
namespace ios {

inline constexpr double v5_0 = 881.0;
inline constexpr double v6_0 = 992.0;
inline constexpr double v6_1 = 993.0;
inline constexpr double v7_0 = 1047.2;
inline constexpr double v7_1 = 1047.25;
inline constexpr double v8_0 = 1140.11;
inline constexpr double v8_1 = 1141.1;
inline constexpr double v9_0 = 1240.1;
inline constexpr double v9_2 = 1242.12;
/// Above all of 9 and below all of 10, whose first one has 1348.
inline constexpr double v10_0 = 1300.0;
/// Above 11.0 and below 11.1, which has 1445.32.
inline constexpr double v11_1 = 1444.12;

} // namespace ios
