#pragma once

#include "Platform/Files/Error.h"

#include <functional>
#include <string>

namespace platform {

/// Is told of an item below a folder that could not be removed, by its path relative to the folder. What is
/// inside of a folder comes before it, and a folder stays for the reason of the first thing that stays in it.
using RemovalFailureHandler =
    std::function<void(const std::string& relativePath, const std::error_code& reason)>;

/// Removes an entry of an opened folder, a folder with all below it, without following a link. Goes on past
/// what cannot be removed; the first error is given. What somebody else removes meanwhile is no error. A name
/// that is no entry of the folder, such as "." or "..", is refused (EINVAL). The handler, if any, is told
/// what stays below the entry; the entry itself is told by the result.
Result<void> removeTree(int parent, const char* name, const RemovalFailureHandler& failed = {});

} // namespace platform
