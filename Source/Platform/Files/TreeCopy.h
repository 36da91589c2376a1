#pragma once

#include "Platform/Files/Error.h"

namespace platform {

/// Copies an entry of one opened folder into another one, a folder with all below it, keeping owner, mode,
/// times, extended attributes and holes; links are copied as links. An existing target is an error (EEXIST),
/// a folder copied into itself too (EINVAL). A failed copy leaves nothing.
Result<void> copyTree(int fromParent, const char* fromName, int toParent, const char* toName);

} // namespace platform
