// What serves where nothing is stored. Which steps are on is told beside each step, in CleanupSteps.h.
#include "Model/Core/CleanupChoices.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Services/OZUserDefaultsSync.h"
#include "Platform/Device/Device.h"

#include <algorithm>

namespace {

constexpr std::string_view standardFileTypes[] = {"log", "logs", "tmp", "temp"};

} // namespace

platform::Dictionary CleanupChoices::defaultCleanupSettings(const platform::Device& device) {
    platform::Dictionary settings;
    for (const auto key : cleanupStepKeys(device)) {
        const auto* step = std::ranges::find(cleanupSteps, key, &CleanupStepDescription::key);
        // Attachments know more than on and off.
        settings[std::string(key)] = key == cleanupstep::attachments
                                         ? platform::Value(uint64_t{0})
                                         : platform::Value(step->byDefault == StepDefault::on);
    }
    return settings;
}

std::vector<std::string> CleanupChoices::defaultFileTypes() {
    return {std::begin(standardFileTypes), std::end(standardFileTypes)};
}

void registerDefaultSettings(platform::UserDefaults& defaults) {
    defaults.registerDefaults({{"warningPopups", true}});
}
