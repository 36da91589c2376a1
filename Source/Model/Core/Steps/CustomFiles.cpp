#include "Model/Core/Removal/CustomFiles.h"

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"

// The user's own files and folders.

void cleanCustomFiles(const StepContext& context) {
    for (const auto& record : context.choices.customFiles()) {
        cleanCustomFile(context.run, record);
    }
}
