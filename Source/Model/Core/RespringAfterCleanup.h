#pragma once

#include "Platform/Formats/PropertyList.h"

/// Whether the home screen should be restarted after a cleanup with these settings: it keeps caches and
/// temporary files open. What was enabled decides, not what was found.
[[nodiscard]] bool shouldRespringAfterCleanup(const platform::Dictionary& settings);
