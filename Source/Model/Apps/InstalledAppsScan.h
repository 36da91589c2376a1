#pragma once

#include "Model/Apps/InstalledApps.h"

/// The applications that the bundle folders of a platform after iOS 7.1 show, with their data, group and
/// plug-in containers, each matched by the identifier in the metadata that the container manager keeps in it.
[[nodiscard]] InstalledApps scanInstalledApps(platform::Device& device);
