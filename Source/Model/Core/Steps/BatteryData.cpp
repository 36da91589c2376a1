#include "Categories/Text.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// Old archives of battery usage.

namespace {

using enum CleanupPrimitive;

constexpr CleanupAction batteryActions[] = {
    {.primitive = delFolderContents, .path = "/var/mobile/Library/BatteryLife/Archives"},
};

// Archives of the last seven days are still being uploaded; the search counts whole days, so that what goes
// is eight days old.
constexpr std::string_view olderThanTheUpload = "+7";

} // namespace

void cleanBatteryData(const StepContext& context) {
    auto& run = context.run;
    run.perform(batteryActions);
    const auto containers = context.appList.systemGroupDataContainerDir();
    if (containers && isNotEmptyOrWhitespace(*containers)) {
        run.quickDel(run.find({*containers, "-mindepth", "5", "-maxdepth", "5", "-regextype",
                               "posix-extended", "-regex", "^.*/Library/BatteryLife/Archives/.*$", "-mtime",
                               std::string(olderThanTheUpload), "-type", "f", "-print"}));
    }
}
