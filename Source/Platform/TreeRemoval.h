#pragma once

#include "Platform/Error.h"

namespace platform {

/// Removes an entry of an opened folder, a folder with all below it, without following a link. Goes on past
/// what cannot be removed; the first error is given. What somebody else removes meanwhile is no error. A name
/// that is no entry of the folder, such as "." or "..", is refused (EINVAL).
Result<void> removeTree(int parent, const char* name);

} // namespace platform
