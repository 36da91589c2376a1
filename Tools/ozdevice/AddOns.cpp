#include "Packages.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

constexpr std::string_view pageFolder = "/Library/PreferenceLoader/Preferences";

constexpr TreeEntry looseAddOns[] = {
    {.path = "/Library/MobileSubstrate/DynamicLibraries/LooseEnd.dylib", .mode = 0755},
    {"/Library/MobileSubstrate/DynamicLibraries/LooseEnd.plist"},
    {.path = "/Library/MobileSubstrate/DynamicLibraries/Sleeper.disabled", .mode = 0755},
    {"/Library/MobileSubstrate/DynamicLibraries/Sleeper.plist"},
    {"/Library/MobileSubstrate/DynamicLibraries/readme.txt"},
    {"/Library/PreferenceLoader/Preferences/NoPage.plist"},
    {"/System/Library/PreferenceBundles/Shared.bundle/shared.png"},
    {"/System/Library/PreferenceBundles/Shared.bundle/shared@2x.png"},
};

platform::Dictionary page(const PreferenceBundleRow& row) {
    platform::Dictionary entry{{"cell", "PSLinkCell"}, {"label", row.label}};
    if (!row.bundle.empty()) {
        entry["bundle"] = row.bundle;
        entry["isController"] = true;
    }
    if (!row.icon.empty()) {
        entry["icon"] = row.icon;
    }
    if (row.lower != 0 || row.upper != 0) {
        platform::Array bounds{row.lower};
        if (row.upper != 0) {
            bounds.emplace_back(row.upper);
        }
        entry["pl_filter"] = platform::Dictionary{{"CoreFoundationVersion", bounds}};
    }
    return {{"entry", entry}};
}

} // namespace

void addPreferenceBundle(DeviceBuild& staging, const PreferenceBundleRow& row) {
    staging.add(fmt::format("{}/{}.plist", pageFolder, row.path), page(row));
    if (!row.bundle.empty()) {
        constexpr TreeEntry bundle[] = {{"/Info.plist"}, {"/icon.png"}, {"/icon@2x.png"}, {"/icon@3x.png"}};
        staging.add(bundle, fmt::format("/Library/PreferenceBundles/{}.bundle", row.bundle));
    }
}

void addLooseAddOns(DeviceBuild& build) {
    build.add(looseAddOns);
    build.add(fmt::format("{}/Sleeper.disabled", pageFolder),
              page({.path = "Sleeper", .label = "Sleeper", .bundle = "Shared", .icon = "shared.png"}));
    build.add(fmt::format("{}/Bare.plist", pageFolder), page({.path = "Bare", .label = "Bare page"}));
}

} // namespace ozdevice
