#pragma once

#include "Random.h"

#include <string>
#include <string_view>

namespace ozdevice {

/// Content that fits a file of this name: a real image for "png", a property list for "plist" (binary and XML
/// in turn), a localized table for "strings", bytes of no host's program for executables and libraries, words
/// for the rest. It depends on nothing but the arguments.
std::string contentForPath(std::string_view path, Random& random);

/// A small real image; different numbers give different colours.
std::string_view smallImage(size_t number);
/// Bytes that look like a program of the device and that no host executes.
std::string programImage(Random& random);
/// Plain words, up to 512 bytes.
std::string words(Random& random);

} // namespace ozdevice
