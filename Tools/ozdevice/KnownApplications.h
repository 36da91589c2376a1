#pragma once

#include "DeviceBuild.h"

#include <span>

namespace ozdevice {

/// A user application whose leftovers are known by name.
struct KnownApplication {
    std::string_view identifier;
    /// Display name and executable.
    std::string_view name;
    /// In its data container: the leftovers, and beside them what is none.
    std::span<const TreeEntry> data;
    /// Numbers in its preference file.
    std::span<const std::string_view> preferenceKeys = {};
};

std::span<const KnownApplication> knownApplications();

} // namespace ozdevice
