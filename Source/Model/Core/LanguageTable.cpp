#include "Model/Core/LanguageTable.h"

#include "Categories/Text.h"

#include <algorithm>
#include <functional>

namespace languagetable {

namespace {

constexpr std::string_view blanks = " \t";
constexpr size_t codeLength = 2;

std::vector<std::string> componentsSeparatedBy(std::string_view separators, std::string_view text) {
    std::vector<std::string> components;
    while (true) {
        const size_t end = text.find_first_of(separators);
        components.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return components;
        }
        text.remove_prefix(end + 1);
    }
}

bool isASCII(std::string_view text) {
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

} // namespace

std::vector<std::string> lines(std::string_view text) {
    if (!isASCII(text)) {
        return {};
    }
    auto lines = componentsSeparatedBy("\r\n", text);
    std::erase_if(lines, std::not_fn(isNotEmptyOrWhitespace));
    return lines;
}

std::string nameOfLine(std::string_view line) {
    return std::string(line.substr(0, line.find_first_of(blanks)));
}

bool isCode(std::string_view word) {
    return word.size() == codeLength;
}

std::vector<std::string> regexComponents(std::string_view line, bool codesOnly) {
    std::vector<std::string> components;
    for (const auto& word : componentsSeparatedBy(blanks, line)) {
        if (!word.empty() && (!codesOnly || isCode(word))) {
            components.push_back(word);
        }
        // A code stands for its regional variants, too.
        if (!codesOnly && isCode(word)) {
            components.push_back(word + "[-_]..");
        }
    }
    return components;
}

} // namespace languagetable
