#include "Model/Core/Steps/StepContext.h"

#include "Model/Core/CleanupSteps.h"

uint64_t StepContext::number(std::string_view key) const {
    const auto found = settings.find(key);
    return found == settings.end() ? 0 : found->second.unsignedValue().value_or(0);
}

bool StepContext::isOn(std::string_view key) const {
    const auto found = settings.find(key);
    if (found == settings.end()) {
        return false;
    }
    return key == cleanupstep::attachments ? number(key) != 0 : found->second.boolValue().value_or(false);
}
