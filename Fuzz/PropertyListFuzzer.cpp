// Property lists: whatever can be read can be written, and reading what was written gives the same again.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Platform/Formats/PropertyList.h"

#include <optional>

using platform::PropertyListFormat;

namespace {

/// None for a text that no property list can hold.
std::optional<std::string> serialized(const platform::Value& value, PropertyListFormat format) {
    try {
        return platform::serializePropertyList(value, format);
    } catch (const platform::AssertionFailure&) {
        return std::nullopt;
    }
}

} // namespace

void readInput(std::string_view bytes) {
    const auto value = platform::parsePropertyList(bytes);
    if (!value) {
        return;
    }
    for (const auto format : {PropertyListFormat::xml, PropertyListFormat::binary}) {
        const auto first = serialized(*value, format);
        if (!first) {
            continue;
        }
        const auto again = platform::parsePropertyList(*first);
        require(again.has_value());
        // A binary list may share equal values in more than one way; the text of equal lists is always the
        // same.
        const auto second = serialized(*again, format);
        require(second.has_value());
        const auto last = platform::parsePropertyList(*second);
        require(last &&
                serialized(*last, PropertyListFormat::xml) == serialized(*again, PropertyListFormat::xml));
    }
}
