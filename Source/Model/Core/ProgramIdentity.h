#pragma once

#include <string_view>

/// How the program is known on a device: the "CFBundleIdentifier" of its bundle.
inline constexpr std::string_view programIdentifier = "com.ozdev90.ozvarine";
/// Where its bundle is on a device that has it installed.
inline constexpr std::string_view programBundlePath = "/Applications/Ozvarine.app";
