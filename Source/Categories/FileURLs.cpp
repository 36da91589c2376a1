#include "Categories/FileURLs.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

namespace {

constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view schemeSigns = "0123456789+-.";
// What stands for itself in a path.
constexpr std::string_view pathSigns = "0123456789/-._~!$&'()*+,=:@";

bool isOneOf(char character, std::string_view signs) {
    return letters.contains(character) || signs.contains(character);
}

std::string urlWithPath(std::string_view scheme, std::string_view path) {
    std::string url = fmt::format("{}://", scheme);
    for (const char character : path) {
        if (isOneOf(character, pathSigns)) {
            url += character;
        } else {
            url += fmt::format("%{:02X}", static_cast<unsigned char>(character));
        }
    }
    return url;
}

std::string_view withoutScheme(std::string_view url) {
    const size_t end = url.find(':');
    const bool hasScheme = end != std::string_view::npos && letters.contains(url.front()) &&
                           std::ranges::all_of(url.substr(0, end), [](char character) {
                               return isOneOf(character, schemeSigns);
                           });
    return hasScheme ? url.substr(end + 1) : url;
}

std::string_view withoutHost(std::string_view url) {
    if (!url.starts_with("//")) {
        return url;
    }
    return url.substr(std::min(url.find('/', 2), url.size()));
}

/// A sign that stands for two hexadecimal digits; none where no such digits are.
std::optional<char> decodedCharacter(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    const bool isWhole = error == std::errc() && end == digits.data() + 2;
    return isWhole ? std::optional(static_cast<char>(value)) : std::nullopt;
}

} // namespace

std::string fileURLWithPath(std::string_view path) {
    return urlWithPath("file", path);
}

std::optional<std::string> iconURLWithPath(std::string_view path) {
    return path.starts_with('/') ? std::optional(urlWithPath("OZIcon", path)) : std::nullopt;
}

std::optional<std::string> pathOfURL(std::string_view url) {
    std::string_view encoded = withoutHost(withoutScheme(url));
    encoded = encoded.substr(0, encoded.find_first_of("?#"));
    std::string path;
    for (size_t index = 0; index < encoded.size(); ++index) {
        const auto decoded =
            encoded[index] == '%' ? decodedCharacter(encoded.substr(index + 1, 2)) : std::nullopt;
        path += decoded.value_or(encoded[index]);
        index += decoded ? 2 : 0;
    }
    return path.empty() ? std::nullopt : std::optional(path);
}
