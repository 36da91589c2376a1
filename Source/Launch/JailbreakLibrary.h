#pragma once

#include <functional>
#include <optional>
#include <string_view>

/// Calls one function of a library that lies on the device: the path, the symbol, the process's own
/// identifier. False if the library cannot be opened.
using LibraryCall =
    std::function<bool(std::string_view path, std::string_view symbol, int processIdentifier)>;

/// On newer generations a process gets its root rights from the jailbreak's library. A device's libraries
/// cannot be loaded on another host, so this one never opens; the process goes on with the rights it has.
bool callDeviceLibrary(std::string_view path, std::string_view symbol, int processIdentifier);

/// Asks the jailbreak for root where the version needs it; goes on silently without its library.
void fixSetuidOnNewerPlatforms(double foundationVersion, const LibraryCall& call);
