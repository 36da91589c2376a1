#include "Model/Core/RespringAfterCleanup.h"

#include "Model/Core/CleanupChoices.h"
#include "Model/Core/CleanupSteps.h"

bool shouldRespringAfterCleanup(const platform::Dictionary& settings) {
    return CleanupChoices::isOn(settings, cleanupstep::cacheFiles) ||
           CleanupChoices::isOn(settings, cleanupstep::tempFiles);
}
