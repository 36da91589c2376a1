#pragma once

#include "Model/Apps/InstalledApps.h"

/// The applications of a platform up to iOS 7.1: those of its installer's cache file, and those that only its
/// application folders show. The cache wins; looking into the folders adds what the cache lacks.
[[nodiscard]] InstalledApps readInstallationCache(platform::Device& device);
