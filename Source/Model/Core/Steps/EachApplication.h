#pragma once

#include <string_view>

class CleanupRun;
class OZApp;
struct StepContext;

// What the steps that go through applications do with each of them first.

/// Logs the name with a line of dashes as long as the name below it.
void logNameOfApplication(CleanupRun& run, const OZApp& app, std::string_view ending);
/// Ends the application; not where a terminal watches.
void quitApplication(const StepContext& context, const OZApp& app);
