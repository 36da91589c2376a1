#pragma once

#include "DeviceBuild.h"

namespace ozdevice {

/// What an application bundle shows on the outside.
struct BundleRow {
    std::string_view identifier;
    std::string_view displayName;
    std::string_view executable;
};

enum class Icon { none, present };

/// The info dictionary of a bundle, as far as the system reads it.
platform::Dictionary infoDictionary(const BundleRow& row, Icon icon);

/// Writes an application bundle with its executable, images in every scale and shape, and languages.
void addBundle(DeviceBuild& build, const std::string& path, const BundleRow& row, Icon icon = Icon::present);

/// Names the owner of a container, in the way of the container manager.
void addContainerMetadata(DeviceBuild& build, const std::string& container, std::string_view identifier);

/// The applications that packages install into "/Applications" are written with the package.
void addApplicationOfPackage(DeviceBuild& staging, const BundleRow& row, Icon icon);

} // namespace ozdevice
