#include "Model/Core/Steps/EachApplication.h"

#include "Model/Core/Steps/StepContext.h"

#include <string>

#include <unicode/unistr.h>

// Lengths are the platform's, in UTF-16 units.
void logNameOfApplication(CleanupRun& run, const OZApp& app, std::string_view ending) {
    const auto length = icu::UnicodeString::fromUTF8(app.displayName()).length();
    const std::string dashes(static_cast<size_t>(length), '-');
    run.log(std::string("\n").append(app.displayName()).append("\n").append(dashes).append(ending));
}

// Somebody at a terminal may well be using the application.
void quitApplication(const StepContext& context, const OZApp& app) {
    if (!context.outputIsTerminal) {
        context.run.quitUnlessAnalyzing(app.executableFileName());
    }
}
