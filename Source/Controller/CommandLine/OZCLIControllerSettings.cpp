#include "Controller/CommandLine/MenuText.h"
#include "Controller/CommandLine/OZCLIController.h"
#include "Model/Apps/OZAppList.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCore.h"

#include <array>

using namespace menutext;

namespace {

// The labels stay the same on every generation of the platform, while the steps do not: each label goes with
// the step at its place, counted without test mode.
constexpr std::array<std::string_view, 13> labels{
    "Test Mode",
    "Message attachments",
    "Safari",
    "Applications",
    "OTA updates",
    "Cydia",
    "Cydia sources",
    "Unused dependencies",
    "Log files",
    "Cache files",
    "Temporary files",
    "Filetype",
    "Custom files and folders",
};
constexpr size_t firstStepWithTwoStates = 2;

constexpr int64_t fileTypesChoice = 14;
constexpr int64_t excludedAppsChoice = 15;
constexpr int64_t languagesChoice = 16;

std::string onOrOff(bool isOn) {
    return (isOn ? green("on") : red("off")) + "\n";
}

std::string attachmentsText(uint64_t value) {
    return value == 1 ? green("smart") + "\n" : onOrOff(value == 2);
}

std::string line(size_t index) {
    return fmt::format("{} {}", number(index + 1), labels[index]);
}

uint64_t attachments(const CleanupChoices& choices) {
    return CleanupChoices::numberOf(choices.cleanupSettings(), cleanupstep::attachments);
}

bool isOn(const CleanupChoices& choices, std::string_view key) {
    return CleanupChoices::isOn(choices.cleanupSettings(), key);
}

} // namespace

void OZCLIController::showSettingsMenu() {
    int64_t choice = 0;
    do {
        printSettings();
        choice = readChoice();
        changeSetting(choice);
        synchronize();
    } while (choice != 0);
}

void OZCLIController::printSettings() {
    const auto keys = CleanupChoices::cleanupStepKeys(_modelBuilder.device());
    std::string text = yellow("Settings:") + "\n\n" + warnings();
    text += line(0) + ": " + onOrOff(core().choices().testMode());
    text += line(1) + ": " + attachmentsText(attachments(core().choices()));
    for (size_t index = firstStepWithTwoStates; index < labels.size(); ++index) {
        text += line(index) + " cleanup: " + onOrOff(isOn(core().choices(), keys[index - 1]));
    }
    text += fmt::format("{} Filetypes to clean: {}\n", number(fileTypesChoice),
                        yellow(fmt::to_string(fmt::join(core().choices().fileTypes(), " "))));
    text += fmt::format(
        "{} Excluded apps: {}\n", number(excludedAppsChoice),
        yellow(fmt::to_string(fmt::join(_modelBuilder.appList().excludedAppsIdentifiers(), " "))));
    text += fmt::format("{} Languages to remove...\n", number(languagesChoice));
    OZStdIO::clear();
    OZStdIO::printf(text + backAndPrompt("main menu"));
}

void OZCLIController::changeSetting(int64_t choice) {
    if (choice == 1) {
        core().choices().setTestMode(!core().choices().testMode());
    } else if (choice == 2) {
        core().choices().setNumberForCleanupSetting((attachments(core().choices()) + 1) % 3,
                                                    cleanupstep::attachments);
    } else if (choice > 2 && choice <= std::ssize(labels)) {
        const auto keys = CleanupChoices::cleanupStepKeys(_modelBuilder.device());
        flipCleanupSetting(keys[static_cast<size_t>(choice) - 2]);
    } else if (choice == fileTypesChoice) {
        showFileTypesMenu();
    } else if (choice == excludedAppsChoice) {
        showExcludedAppsMenu();
    } else if (choice == languagesChoice) {
        showLanguagesToRemoveMenu();
    }
}

void OZCLIController::flipCleanupSetting(std::string_view key) {
    core().choices().setNumberForCleanupSetting(!isOn(core().choices(), key), key);
}
