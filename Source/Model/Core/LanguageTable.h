#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The program's table of languages: a line each, the English name first, then its codes and other names.
namespace languagetable {

/// The table's lines without the blank ones. Empty unless the whole text is ASCII.
[[nodiscard]] std::vector<std::string> lines(std::string_view text);

/// The name that a line begins with.
[[nodiscard]] std::string nameOfLine(std::string_view line);

/// Whether a word is a code, such as "de", and no name.
[[nodiscard]] bool isCode(std::string_view word);

/// The words of a line as regular expressions, in their order; each code is followed by one for its regional
/// variants. With codes only, they are the codes as they stand.
[[nodiscard]] std::vector<std::string> regexComponents(std::string_view line, bool codesOnly);

} // namespace languagetable
