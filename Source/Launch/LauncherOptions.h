#pragma once

#include "Model/Core/OZCore.h"
#include "Platform/Device/DeviceFacts.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

/// The options that the launcher takes from the front of the vector, before the program's own switches.
struct LauncherOptions {
    enum class Request { run, help, version };
    /// What a switch does to a device: tells something about it, analyses it (nothing changes but the log),
    /// changes it, or shows the graphical front end.
    enum class Purpose { tell, analyze, change, show };

    Request request = Request::run;
    /// The directory of the device; none if neither the option nor the environment names one.
    std::optional<std::string> device;
    /// Makes a cleanup an analysis.
    Analyze dryRun = Analyze::no;
    /// The process fails when items stayed that should have gone.
    bool strict = false;
    /// Puts damaged settings aside before anything is done.
    bool resetSettings = false;
    /// A file of the host that gets the log of the run, too; "-" is standard output.
    std::optional<std::string> logFile;
    /// What the device's tree may not tell.
    platform::GivenFacts given;
    /// The vector as the rest of the program sees it: entry 0, then what follows the launcher's options.
    std::vector<std::string> vector;

    [[nodiscard]] Purpose purpose() const;

    /// The error is one line that says what is wrong and what to do. `environmentDevice` stands in for a
    /// missing option; null or empty means none.
    static std::expected<LauncherOptions, std::string> parse(const std::vector<std::string>& arguments,
                                                             const char* environmentDevice);
    static std::string help();
    static std::string version();
};
