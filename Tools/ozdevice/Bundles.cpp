#include "Bundles.h"

#include "Platform/Device/DeviceNames.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

// Images in the scales and shapes that devices choose from; "lonely.png" has no twin of a better scale.
constexpr TreeEntry images[] = {
    {"/AppIcon60x60.png"},
    {"/AppIcon60x60@2x.png"},
    {"/AppIcon60x60@3x.png"},
    {"/AppIcon76x76@2x~ipad.png"},
    {"/Default-568h@2x.png"},
    {"/Default-Landscape.png"},
    {"/Default-Portrait@2x.png"},
    {"/Default.png"},
    {"/Default@2x.png"},
    {"/icon-72.png"},
    {"/images/background.png"},
    {"/images/background@2x.png"},
    {"/images/background@3x.png"},
    {"/images/button.png"},
    {"/images/button@2x.png"},
    {"/images/button~ipad.png"},
    {"/images/button@2x~ipad.png"},
    {"/images/lonely.png"},
    {"/images/photo.jpg"},
    {"/images/photo@2x.jpg"},
    {"/images/sharp@3x.png"},
};

constexpr TreeEntry languages[] = {
    {"/Base.lproj/Main.nib"},
    {"/German.lproj/Localizable.strings"},
    {"/de.lproj/InfoPlist.strings"},
    {"/de.lproj/Localizable.strings"},
    {"/en.lproj/Localizable.strings"},
    {"/fr.lproj/Localizable.strings"},
    {"/ja.lproj/Localizable.strings"},
    {"/pt-BR.lproj/Localizable.strings"},
    {"/zh-Hans.lproj/Localizable.strings"},
};

} // namespace

platform::Dictionary infoDictionary(const BundleRow& row, Icon icon) {
    platform::Dictionary info{
        {"CFBundleIdentifier", row.identifier}, {"CFBundleExecutable", row.executable},
        {"CFBundleName", row.executable},       {"CFBundleDisplayName", row.displayName},
        {"CFBundlePackageType", "APPL"},        {"CFBundleShortVersionString", "1.2"},
    };
    if (icon == Icon::present) {
        const platform::Array files{"AppIcon60x60"};
        info["CFBundleIconFiles"] = files;
        info["CFBundleIcons"] =
            platform::Dictionary{{"CFBundlePrimaryIcon", platform::Dictionary{{"CFBundleIconFiles", files}}}};
    }
    return info;
}

void addBundle(DeviceBuild& build, const std::string& path, const BundleRow& row, Icon icon) {
    build.add(path + "/Info.plist", infoDictionary(row, icon));
    build.add(path + "/PkgInfo", std::string_view("APPL????"));
    const std::string executable = fmt::format("/{}", row.executable);
    const TreeEntry program[] = {{.path = executable, .mode = 0755}};
    build.add(program, path);
    build.add(languages, path);
    if (icon == Icon::present) {
        build.add(images, path);
    }
}

void addContainerMetadata(DeviceBuild& build, const std::string& container, std::string_view identifier) {
    build.add(fmt::format("{}/{}", container, devicename::containerMetadata),
              platform::Dictionary{{"MCMMetadataIdentifier", identifier},
                                   {"MCMMetadataContentClass", 2},
                                   {"MCMMetadataUUID", build.random.uuid()}});
}

void addApplicationOfPackage(DeviceBuild& staging, const BundleRow& row, Icon icon) {
    addBundle(staging, fmt::format("/Applications/{}.app", row.executable), row, icon);
}

} // namespace ozdevice
