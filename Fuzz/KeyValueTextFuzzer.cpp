// Key-value text with any separators: the first two lines of the input are the key and the entry separator.
#include "Categories/KeyValueText.h"
#include "Categories/Text.h"
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"

namespace {

std::string_view takeFirstLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

} // namespace

void readInput(std::string_view bytes) {
    const std::string_view keySeparator = takeFirstLine(bytes);
    const std::string_view entrySeparator = takeFirstLine(bytes);
    const auto& blanks = whitespaceAndNewlineCharacterSet();
    for (const auto& [key, value] : dictionaryWithString(bytes, keySeparator, entrySeparator, blanks)) {
        require(stringByTrimmingCharactersInSet(key, blanks) == key);
        require(stringByTrimmingCharactersInSet(value, blanks) == value);
    }
    std::ignore = dictionaryWithString(bytes, keySeparator);
}
