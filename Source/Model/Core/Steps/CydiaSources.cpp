#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// Cydia's lists of package sources.

namespace {

using enum CleanupPrimitive;

constexpr CleanupAction sourceActions[] = {
    {.primitive = delFolderContents, .path = "/var/lib/apt/lists", .onlyFiles = OnlyFiles::yes},
    {.primitive = delFolderContents,
     .path = "/var/mobile/Library/Caches/com.saurik.Cydia/lists",
     .onlyFiles = OnlyFiles::yes},
};

} // namespace

void cleanCydiaSources(const StepContext& context) {
    context.run.perform(sourceActions);
}
