#pragma once

#include "Bundles.h"

#include <optional>
#include <span>
#include <string_view>

namespace ozdevice {

/// How a package came to its state.
enum class PackageState { installed, automatic, configurationLeft };

/// One package of the device's package database.
struct PackageRow {
    std::string_view identifier;
    std::string_view name;
    std::string_view version;
    std::string_view depends = {};
    std::string_view preDepends = {};
    PackageState state = PackageState::installed;
    /// Files below the device's root.
    std::span<const TreeEntry> files = {};
    std::string_view configurationFile = {};
    /// An application below "/Applications"; no identifier means none.
    BundleRow application = {};
    Icon applicationIcon = Icon::present;
    /// Takes the place of the package's icon; empty for none.
    std::string_view icon = {};
    int since = 0;
    int until = anyMajor;
};

/// A page that a package adds to the settings application.
struct PreferenceBundleRow {
    std::string_view package;
    /// Below the folder of such pages, without extension.
    std::string_view path;
    std::string_view label;
    std::string_view bundle = {};
    std::string_view icon = {};
    /// Core Foundation versions that it is for: from the first to below the second; 0 leaves a bound out.
    double lower = 0;
    double upper = 0;
};

std::span<const PackageRow> packageTable();
std::span<const PreferenceBundleRow> preferenceBundleTable();
/// Add-ons and pages that no package owns, and those that are switched off.
void addLooseAddOns(DeviceBuild& build);
void addPreferenceBundle(DeviceBuild& staging, const PreferenceBundleRow& row);

} // namespace ozdevice
