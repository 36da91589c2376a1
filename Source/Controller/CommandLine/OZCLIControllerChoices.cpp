#include "Controller/CommandLine/MenuText.h"
#include "Controller/CommandLine/OZCLIController.h"
#include "Model/Apps/OZAppList.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCore.h"

#include <algorithm>
#include <iterator>
#include <sstream>

using namespace menutext;

namespace {

constexpr std::string_view previousWord = "PREV";
constexpr std::string_view deleteWord = "DEL";

std::string lineFor(std::string_view prompt) {
    OZStdIO::printf(fmt::format("\n\n{} ", yellow(prompt)));
    return OZStdIO::getLine().value_or("");
}

// The line's words; the word for the previous ones gives way to them, once.
std::vector<std::string> wordsOf(const std::string& line, const std::vector<std::string>& previous) {
    std::istringstream stream(line);
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    if (const auto found = std::ranges::find(words, previousWord); found != words.end()) {
        words.erase(found);
        words.insert(words.end(), previous.begin(), previous.end());
    }
    return words;
}

} // namespace

void OZCLIController::showExcludedAppsMenu() {
    OZAppList& appList = _modelBuilder.appList();
    const std::string line =
        lineFor("Excluded apps bundle IDs (separated by space. \"PREV\" expands to the previous excluded "
                "apps, \"DEL\" deletes all excluded apps):");
    if (line.empty()) {
        return;
    }
    const auto identifiers = wordsOf(line, appList.excludedAppsIdentifiers());
    if (line == deleteWord || identifiers.empty()) {
        appList.removeAllExcludedApps();
        return;
    }
    for (const auto& identifier : identifiers) {
        appList.setExclusionMask(OZExclusionMask::all, identifier);
    }
}

void OZCLIController::showFileTypesMenu() {
    const std::string line =
        lineFor("Filetypes to clean (separated by space. \"PREV\" expands to the previous "
                "filetypes, \"DEL\" deletes all filetypes):");
    if (line.empty()) {
        return;
    }
    core().choices().setFileTypesExcludingIllegal(
        line == deleteWord ? std::vector<std::string>() : wordsOf(line, core().choices().fileTypes()));
}

void OZCLIController::showLanguagesToRemoveMenu() {
    const std::vector<std::string> languages = core().choices().removableLanguages();
    for (;;) {
        printLanguages(languages);
        const int64_t choice = readChoice();
        if (choice == 0) {
            return;
        }
        changeLanguages(languages, choice);
        synchronize();
    }
}

void OZCLIController::printLanguages(const std::vector<std::string>& languages) {
    std::string text = yellow("Languages to remove:") + "\n\n" + warnings();
    for (size_t index = 0; index < languages.size(); ++index) {
        const bool isSelected = core().choices().languagesToRemove().contains(languages[index]);
        text += fmt::format("{}) {}{}\n", yellow(fmt::to_string(index + 1)), languages[index],
                            isSelected ? " " + green("v") : "");
    }
    text += fmt::format("\n{} Select/unselect all\n", number(languages.size() + 1));
    OZStdIO::clear();
    OZStdIO::printf(text + backAndPrompt("settings menu"));
}

void OZCLIController::changeLanguages(const std::vector<std::string>& languages, int64_t choice) {
    if (choice == std::ssize(languages) + 1) {
        // The numbers decide, whatever languages they are.
        if (core().choices().languagesToRemove().size() == languages.size()) {
            core().choices().removeAllLanguagesToRemove();
        } else {
            core().choices().setLanguagesToRemove({languages.begin(), languages.end()});
        }
    } else if (choice > 0 && choice <= std::ssize(languages)) {
        const std::string& language = languages[static_cast<size_t>(choice) - 1];
        if (core().choices().languagesToRemove().contains(language)) {
            core().choices().removeLanguageToRemove(language);
        } else {
            core().choices().addLanguageToRemove(language);
        }
    }
}
