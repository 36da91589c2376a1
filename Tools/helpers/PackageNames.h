#pragma once

#include <string>
#include <string_view>

/// A line of a package query as the device's own tool would write it. The host's tool takes the device's
/// architecture for a foreign one and puts it behind every package's name ("name:iphoneos-arm").
std::string lineWithPlainNames(std::string_view line);

/// Copies a stream of lines to standard output with plain names, until it ends. False if writing fails.
bool copyWithPlainNames(int from);
