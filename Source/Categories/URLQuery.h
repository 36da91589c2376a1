#pragma once

#include <map>
#include <string>
#include <string_view>

/// The arguments of a URL's query, by name; none of them is percent-decoded. A part without "=" is a name
/// with an empty value, and a part with a value but no name is dropped. Empty for a URL without a query.
[[nodiscard]] std::map<std::string, std::string, std::less<>> queryArguments(std::string_view url);
