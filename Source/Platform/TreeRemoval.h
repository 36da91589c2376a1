#pragma once

#include "Platform/Error.h"

namespace platform {

/// Removes an entry of an opened folder, a folder with all below it, without following a link. Goes on past
/// what cannot be removed; the first error is given.
Result<void> removeTree(int parent, const char* name);

} // namespace platform
