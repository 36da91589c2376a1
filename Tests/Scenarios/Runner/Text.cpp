#include "Tests/Scenarios/Runner/Text.h"

#include "Platform/Formats/UTF8.h"
#include "Tests/Support/Host.h"

namespace scenarios {

namespace {

constexpr std::string_view titleMark = "== ";
constexpr std::string_view anything = "…";

bool matchesLine(std::string_view expected, std::string_view actual) {
    const size_t gap = expected.find(anything);
    if (gap == std::string_view::npos) {
        return expected == actual;
    }
    if (!actual.starts_with(expected.substr(0, gap))) {
        return false;
    }
    actual.remove_prefix(gap);
    expected.remove_prefix(gap + anything.size());
    for (size_t skipped = 0; skipped <= actual.size(); ++skipped) {
        if (matchesLine(expected, actual.substr(skipped))) {
            return true;
        }
    }
    return false;
}

bool standsForManyLines(std::string_view expected) {
    return expected.size() == anything.size() + 2 && expected.ends_with(anything);
}

/// Behind the bracket that closes the first one; quotes hide brackets.
size_t endOfDictionary(std::string_view text) {
    bool isQuoted = false;
    int depth = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        isQuoted = isQuoted != (text[at] == '"');
        depth += isQuoted ? 0 : text[at] == '{' ? 1 : text[at] == '}' ? -1 : 0;
        at += text[at] == '\\' ? 1 : 0;
        if (depth == 0) {
            return at + 1;
        }
    }
    return text.size();
}

using Place = Lines::const_iterator;

bool matchesFrom(Place expected, Place expectedEnd, Place actual, Place actualEnd) {
    for (; expected != expectedEnd; ++expected, ++actual) {
        if (standsForManyLines(*expected)) {
            for (Place next = actual;; ++next) {
                if (matchesFrom(expected + 1, expectedEnd, next, actualEnd)) {
                    return true;
                }
                if (next == actualEnd || (*next)[0] != (*expected)[0]) {
                    return false;
                }
            }
        }
        if (actual == actualEnd || !matchesLine(*expected, *actual)) {
            return false;
        }
    }
    return actual == actualEnd;
}

} // namespace

Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::vector<Scenario> scenariosOf(const std::string& file) {
    std::vector<Line> shared;
    std::vector<Scenario> scenarios;
    size_t number = 0;
    for (const auto& text : linesOf(tests::contentOf(file))) {
        if (text.starts_with(titleMark)) {
            scenarios.push_back({.title = text.substr(titleMark.size()), .lines = shared});
        } else {
            (scenarios.empty() ? shared : scenarios.back().lines).push_back({number, text});
        }
        ++number;
    }
    if (scenarios.empty()) {
        throw std::runtime_error("no scenario in " + file);
    }
    return scenarios;
}

std::string unescaped(std::string_view text) {
    std::string plain;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            plain += text[at];
            continue;
        }
        const char mark = text[++at];
        if (mark == 'x' && at + 2 < text.size()) {
            plain += static_cast<char>(std::stoi(std::string(text.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else {
            plain += mark == 'n' ? '\n' : mark == 't' ? '\t' : mark == 'r' ? '\r' : mark == '0' ? '\0' : mark;
        }
    }
    return plain;
}

std::string escaped(std::string_view text) {
    std::string shown;
    const bool isText = platform::isUTF8(text);
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\\' || character == '\n' || character == '\0') {
            shown += character == '\n' ? "\\n" : character == '\0' ? "\\0" : "\\\\";
        } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !isText)) {
            shown += fmt::format("\\x{:02x}", byte);
        } else {
            shown += character;
        }
    }
    return shown;
}

std::string takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    std::string word;
    if (line.starts_with('"')) {
        size_t end = 1;
        while (end < line.size() && line[end] != '"') {
            end += line[end] == '\\' ? 2 : 1;
        }
        word = unescaped(line.substr(1, end - 1));
        line.remove_prefix(std::min(end + 1, line.size()));
    } else {
        const size_t end =
            line.starts_with('{') ? endOfDictionary(line) : std::min(line.find(' '), line.size());
        word = line.substr(0, end);
        line.remove_prefix(end);
    }
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return word;
}

Words wordsOf(std::string_view line) {
    Words words;
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    while (!line.empty()) {
        words.push_back(takeWord(line));
    }
    return words;
}

std::string expanded(std::string_view text, const Variables& variables) {
    std::string result;
    while (!text.empty()) {
        const size_t mark = std::min(text.find('$'), text.size());
        result += text.substr(0, mark);
        text.remove_prefix(mark);
        if (text.empty()) {
            break;
        }
        const bool braced = text.starts_with("${");
        const size_t start = braced ? 2 : 1;
        size_t end = start;
        while (end < text.size() && (std::isalnum(static_cast<unsigned char>(text[end])) != 0)) {
            ++end;
        }
        const auto known = variables.find(text.substr(start, end - start));
        if (known == variables.end()) {
            result += '$';
            text.remove_prefix(1);
        } else {
            result += expanded(known->second, variables);
            text.remove_prefix(end + (braced ? 1 : 0));
        }
    }
    return result;
}

bool matches(const Lines& expected, const Lines& actual) {
    return matchesFrom(expected.begin(), expected.end(), actual.begin(), actual.end());
}

std::string difference(const Lines& expected, const Lines& actual) {
    // Lengths of the longest common ends.
    std::vector lengths(expected.size() + 1, std::vector<size_t>(actual.size() + 1, 0));
    for (size_t row = expected.size(); row-- > 0;) {
        for (size_t column = actual.size(); column-- > 0;) {
            lengths[row][column] = matchesLine(expected[row], actual[column])
                                       ? lengths[row + 1][column + 1] + 1
                                       : std::max(lengths[row + 1][column], lengths[row][column + 1]);
        }
    }
    std::string text;
    size_t row = 0;
    size_t column = 0;
    while (row < expected.size() || column < actual.size()) {
        if (row < expected.size() && column < actual.size() && matchesLine(expected[row], actual[column])) {
            text += "  " + actual[column++] + "\n";
            ++row;
        } else if (column == actual.size() ||
                   (row < expected.size() && lengths[row + 1][column] >= lengths[row][column + 1])) {
            text += "- " + expected[row++] + "\n";
        } else {
            text += "+ " + actual[column++] + "\n";
        }
    }
    return text;
}

} // namespace scenarios
