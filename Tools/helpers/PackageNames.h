#pragma once

#include <string>
#include <string_view>

/// What a package query writes: a table of packages, or the packages that paths belong to.
enum class QueryOutput { list, search };

/// A line of a package query as the device's own tool would write it. The host's tool takes the device's
/// architecture for a foreign one and puts it behind every package's name ("name:iphoneos-arm").
std::string lineWithPlainNames(std::string_view line, QueryOutput output);

/// Copies a stream of lines to standard output with plain names, until it ends. False if writing fails.
bool copyWithPlainNames(int from, QueryOutput output);
