#include "Categories/KeyValueText.h"

#include "Categories/Text.h"

namespace {

/// Cuts the first entry off the text; none of its characters is lost but the separator.
std::string_view takeEntry(std::string_view& text, std::string_view separator) {
    size_t end = text.find(separator);
    size_t width = separator.size();
    if (separator.empty()) {
        const auto& newlines = newlineCharacterSet();
        const auto size = static_cast<int32_t>(text.size());
        const int32_t found = newlines.spanUTF8(text.data(), size, USET_SPAN_NOT_CONTAINED);
        end = static_cast<size_t>(found);
        // A run of newlines holds only empty entries, which count for nothing.
        width =
            static_cast<size_t>(newlines.spanUTF8(text.data() + found, size - found, USET_SPAN_CONTAINED));
    }
    const std::string_view entry = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + width);
    return entry;
}

} // namespace

StringDictionary dictionaryWithString(std::string_view string, std::string_view keySeparator) {
    return dictionaryWithString(string, keySeparator, "", whitespaceAndNewlineCharacterSet());
}

StringDictionary dictionaryWithString(std::string_view string, std::string_view keySeparator,
                                      std::string_view entrySeparator,
                                      const icu::UnicodeSet& charactersToTrim) {
    StringDictionary dictionary;
    while (!string.empty() && !keySeparator.empty()) {
        const std::string_view entry = takeEntry(string, entrySeparator);
        const size_t split = entry.find(keySeparator);
        if (split == entry.npos) {
            continue;
        }
        const std::string_view value = entry.substr(split + keySeparator.size());
        if (value.find(keySeparator) == value.npos) {
            dictionary.insert_or_assign(
                std::string(stringByTrimmingCharactersInSet(entry.substr(0, split), charactersToTrim)),
                std::string(stringByTrimmingCharactersInSet(value, charactersToTrim)));
        }
    }
    return dictionary;
}
