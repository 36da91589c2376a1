#include "Model/Packages/FileOwners.h"

#include "Categories/Text.h"
#include "Model/Packages/PackageName.h"
#include "Model/Packages/TextLines.h"
#include "Platform/Formats/UTF8.h"

#include <optional>

namespace {

std::vector<std::string_view> splitIdentifiers(std::string_view text) {
    constexpr std::string_view separator = ", ";
    std::vector<std::string_view> identifiers;
    for (size_t end = 0; end != std::string_view::npos;) {
        end = text.find(separator);
        identifiers.push_back(withoutArchitecture(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    }
    return identifiers;
}

std::optional<FileOwners> parseLine(std::string_view line) {
    constexpr std::string_view separator = ": ";
    const size_t split = line.find(separator);
    if (!platform::isUTF8(line) || split == std::string_view::npos ||
        split + separator.size() == line.size()) {
        return std::nullopt;
    }
    return FileOwners{.path = line.substr(split + separator.size()),
                      .identifiers = splitIdentifiers(line.substr(0, split))};
}

} // namespace

std::vector<FileOwners> parseFileOwners(std::string_view answer) {
    std::vector<FileOwners> files;
    while (!answer.empty()) {
        const std::string_view line = takeLine(answer, newlineCharacterSet());
        if (auto owners =
                parseLine(stringByTrimmingCharactersInSet(line, whitespaceAndNewlineCharacterSet()))) {
            files.push_back(std::move(*owners));
        }
    }
    return files;
}
