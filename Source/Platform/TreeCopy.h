#pragma once

#include "Platform/Error.h"

namespace platform {

/// Copies an entry of one opened folder into another one, a folder with all below it, keeping owner, mode,
/// times and extended attributes; links are copied as links. An existing target is an error (EEXIST). On an
/// error the part that was written may remain at the target.
Result<void> copyTree(int fromParent, const char* fromName, int toParent, const char* toName);

} // namespace platform
