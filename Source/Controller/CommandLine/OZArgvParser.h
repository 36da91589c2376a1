#pragma once

#include "Model/Core/OZCore.h"

#include <optional>
#include <span>
#include <string>

class OZModelBuilder;

/// What follows a cleanup that a switch has asked for.
enum class OZCleanAction : unsigned {
    plain = 0,
    /// Prints the result record.
    printResults = 1,
    /// Restarts the home screen if the step for caches or the one for temporary files was enabled.
    autoRespring = 2,
    respring = 3,
};

/// Turns the process into a one-shot tool when it is given a switch.
class OZArgvParser {
  public:
    struct Options {
        /// With `Analyze::yes` a cleanup is an analysis, and nothing is restarted or restored.
        Analyze analyze = Analyze::no;
        /// A cleanup fails when items stayed that should have gone.
        bool strict = false;
    };

    OZArgvParser(OZModelBuilder& modelBuilder, Options options)
        : _modelBuilder(modelBuilder)
        , _options(options) {}

    /// Does what the vector's first switch asks for and gives the process's exit status; none without a
    /// switch.
    std::optional<int> parseArgumentVector(std::span<const std::string> vector);

    /// Whether a person sits at standard input.
    [[nodiscard]] static bool isInputInteractive();
    /// Runs one cleanup; whether it ran, and with all that was asked of it.
    bool cleanWithAction(OZCleanAction action);
    /// Prints the user's language and the plug-ins of the home screen, for scripts: a key and its value a
    /// line.
    void printSettings();

  private:
    /// Runs the menu; false, with a line on standard error, where it cannot be used.
    bool showMenu();
    [[nodiscard]] bool shouldRespring() const;
    void respring();
    void restoreTogglableItems();

    OZModelBuilder& _modelBuilder;
    Options _options;
};
