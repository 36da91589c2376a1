// Which languages may be removed, and how they show in names of files.
#include "Categories/TextFolding.h"
#include "Model/Core/CleanupChoices.h"
#include "Model/Core/LanguageTable.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"

#include <algorithm>
#include <iterator>

using languagetable::nameOfLine;

namespace {

constexpr std::string_view languageTable = "lang";
constexpr std::string_view protectedLanguage = "English";

bool isPartOfAny(std::span<const std::string> names, std::string_view language) {
    return std::ranges::any_of(
        names, [&](const std::string& name) { return containsIgnoringCaseAndDiacritics(name, language); });
}

} // namespace

void CleanupChoices::removeLanguagesInUse(std::span<const std::string> names) {
    std::erase_if(_languagesToRemove,
                  [&](const std::string& language) { return isPartOfAny(names, language); });
}

std::vector<std::string> CleanupChoices::languagesInUse() const {
    return {std::string(protectedLanguage), _localizationManager.systemLanguage(),
            _localizationManager.userLanguage().value_or("")};
}

void CleanupChoices::localize() {
    removeLanguagesInUse(languagesInUse());
}

std::vector<std::string> CleanupChoices::removableLanguages() const {
    std::vector<std::string> names;
    std::ranges::transform(languageRegexFileLines(), std::back_inserter(names), nameOfLine);
    const auto inUse = languagesInUse();
    std::erase_if(names, [&](const std::string& name) { return isPartOfAny(inUse, name); });
    return names;
}

const std::vector<std::string>& CleanupChoices::languageRegexFileLines() const {
    if (_languageRegexFileLines.empty()) {
        const auto text = _localizationManager.bundle().contentsOfResource(languageTable);
        _languageRegexFileLines = languagetable::lines(text.value_or(""));
    }
    return _languageRegexFileLines;
}

std::vector<std::string> CleanupChoices::languageRegexComponentsShort(bool codesOnly) const {
    std::vector<std::string> components;
    for (const auto& line : languageRegexFileLines()) {
        if (_languagesToRemove.contains(nameOfLine(line))) {
            std::ranges::move(languagetable::regexComponents(line, codesOnly),
                              std::back_inserter(components));
        }
    }
    return components;
}
