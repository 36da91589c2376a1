#pragma once

#include "Model/Apps/OZAppList.h"
#include "Model/Core/CleanupChoices.h"
#include "Model/Core/CleanupRun.h"
#include "Platform/Device/DeviceFacts.h"

/// What a step or a removal may use: the run, through which alone it acts, and what it decides by.
struct RunContext {
    CleanupRun& run;
    const CleanupChoices& choices;
    const OZAppList& appList;
    const platform::DeviceFacts& facts;

    /// Whether it is known which applications there are, and so which ones are to be spared.
    [[nodiscard]] bool knowsApplications() const { return appList.isComplete(); }
};
