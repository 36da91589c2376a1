#include "Categories/Text.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// Old archives of battery usage.

namespace {

using enum CleanupPrimitive;

constexpr CleanupAction batteryActions[] = {
    {.primitive = delFolderContents, .path = "/var/mobile/Library/BatteryLife/Archives"},
};

} // namespace

void cleanBatteryData(const StepContext& context) {
    auto& run = context.run;
    run.perform(batteryActions);
    const auto containers = context.appList.systemGroupDataContainerDir();
    if (containers && isNotEmptyOrWhitespace(*containers)) {
        run.quickDel(run.find({*containers, "-mindepth", "5", "-maxdepth", "5", "-regextype",
                               "posix-extended", "-regex", "^.*/Library/BatteryLife/Archives/.*$", "-mtime",
                               "+7", "-type", "f", "-print"}));
    }
}
