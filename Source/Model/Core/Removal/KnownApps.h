#pragma once

#include <string_view>

class CleanupRun;
class OZAppList;

/// What a well-known application leaves behind; nothing for one that is unknown or not installed. The current
/// directory stays where the rule for the application went.
void cleanKnownApp(CleanupRun& run, const OZAppList& appList, std::string_view identifier);
