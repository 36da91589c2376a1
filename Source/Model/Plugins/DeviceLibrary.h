#pragma once

#include <functional>
#include <string_view>

/// Loads a library that lies on the device into the process, binding its symbols lazily. False if it cannot
/// be loaded.
using LibraryLoader = std::function<bool(std::string_view devicePath)>;

/// A device's libraries cannot run on another host, and nothing of a tree is to run there: it never loads one
/// and looks at none.
bool loadDeviceLibrary(std::string_view devicePath);
