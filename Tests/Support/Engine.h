#pragma once

#include "Model/Apps/OZAppList.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"
#include "Tests/Support/Usual.h"

namespace tests {

/// The program without a text in any language: to read them takes longer than to clean a small device.
inline const platform::Bundle noTexts{std::filesystem::path()};

/// A device's engine with its log and its applications. The choices are as where none are stored, until they
/// are loaded.
struct Engine {
    explicit Engine(platform::Device& device, const platform::Bundle& resources = noTexts)
        : apps(device)
        , languages(device, device.standardUserDefaults(), resources)
        , core(device, apps, languages) {
        core.setCleanupLogger(std::make_unique<OZCleanupLogger>(device));
    }
    /// Runs the given steps alone; with none of them it takes on the mode for primitives.
    void clean(const std::vector<std::string_view>& steps, OZCoreMode mode = OZCoreMode::clean) {
        platform::Dictionary settings;
        for (const auto step : steps) {
            settings[std::string(step)] = true;
        }
        core.choices().setTestMode(mode == OZCoreMode::test);
        core.clean(&settings, mode == OZCoreMode::analyze ? Analyze::yes : Analyze::no);
    }

    OZAppList apps;
    OZLocalizationManager languages;
    OZCore core;
};

} // namespace tests
