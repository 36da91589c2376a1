#pragma once

#include "Model/Core/RunContext.h"
#include "Platform/Formats/PropertyList.h"

#include <cstdint>
#include <string_view>

/// What the steps of one cleanup may use.
struct StepContext : RunContext {
    /// The steps to enter, by key.
    const platform::Dictionary& settings;
    /// Whether a terminal watches: the run then leaves applications alone.
    bool outputIsTerminal;

    /// A setting as a number, 0 where there is none.
    [[nodiscard]] uint64_t number(std::string_view key) const {
        return CleanupChoices::numberOf(settings, key);
    }
    /// Whether a step is to be entered. A step that is not named is off.
    [[nodiscard]] bool isOn(std::string_view key) const { return CleanupChoices::isOn(settings, key); }
};
