#pragma once

#include "Controller/CommandLine/MenuWarnings.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class OZCore;
class OZModelBuilder;

/// The front end for a person at a terminal: menus of numbers, in English. What it shows is read from the
/// model each time; each choice is stored at once, or is none. Warnings stand below the next screen's
/// heading. Everything runs on the calling thread but the work that a line of dots waits for. At the end of
/// input each menu takes its way out, so that the program ends.
class OZCLIController {
  public:
    /// The builder outlives the controller.
    explicit OZCLIController(OZModelBuilder& modelBuilder);

    /// Shows the main menu; returns when the user leaves it.
    void startCLI();

    void printTitle();
    /// What a run has done; without a size for runs that have none.
    void printResults(uint64_t fileCount, const std::optional<std::string>& freedSpaceString);
    /// Runs the block on a queue, and draws the message and its dots until the block has returned.
    void executeBlockInBackground(const std::function<void()>& block, std::string_view waitMessage);

    // The menus below; each returns when the user goes back.
    void showMoreMenu();
    void showSettingsMenu();
    void showExcludedAppsMenu();
    void showFileTypesMenu();
    void showLanguagesToRemoveMenu();

    /// What is to be seen below a screen's heading; see MenuWarnings::take.
    [[nodiscard]] std::string warnings() { return _warnings.take(); }

  private:
    /// The number that the user enters; that of the way out at the end of input.
    static int64_t readChoice();
    void runCleanup(bool analyze);
    void printSettings();
    void changeSetting(int64_t choice);
    void flipCleanupSetting(std::string_view key);
    void printLanguages(const std::vector<std::string>& languages);
    void changeLanguages(const std::vector<std::string>& languages, int64_t choice);
    /// Stores the choices; where that fails, those that are stored are in force again.
    void synchronize();
    OZCore& core();

    OZModelBuilder& _modelBuilder;
    MenuWarnings _warnings;
};
