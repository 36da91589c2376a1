#pragma once

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCore.h"

/// What the banner of a log says of the paths below it.
namespace runtitle {

inline constexpr std::string_view deletedFiles = "DELETED FILES";
inline constexpr std::string_view processedFiles = "PROCESSED FILES";
inline constexpr std::string_view restoredFiles = "RESTORED FILES";

constexpr std::string_view forMode(OZCoreMode mode) {
    return mode == OZCoreMode::clean ? deletedFiles : processedFiles;
}

} // namespace runtitle

/// What the sections of one run share. For the engine's own files.
struct OZCore::Run {
    /// The steps to enter, by key.
    const platform::Dictionary& settings;
    /// Whether a terminal watches: the run then leaves applications alone.
    bool outputIsTerminal;

    /// A setting as a number, 0 where there is none.
    [[nodiscard]] uint64_t number(std::string_view key) const;
    /// Whether a step is to be entered. A step that is not named is off.
    [[nodiscard]] bool isOn(std::string_view key) const;
};
