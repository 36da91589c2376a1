#include "Generation.h"

#include "Model/Apps/AppContainerLayout.h"
#include "Platform/Device/DeviceFacts.h"

#include <charconv>

#include <fmt/format.h>

namespace ozdevice {
namespace {

struct MajorVersion {
    int major;
    std::string_view usualRelease;
    std::string_view usualModel;
};

constexpr MajorVersion majorVersions[] = {
    {4, "4.3.3", "iPhone3,1"},   {5, "5.1.1", "iPhone4,1"},   {6, "6.1.2", "iPhone5,2"},
    {7, "7.1.2", "iPhone6,2"},   {8, "8.4.1", "iPhone7,1"},   {9, "9.3.3", "iPhone8,1"},
    {10, "10.3.3", "iPhone9,3"}, {11, "11.1.2", "iPhone9,3"},
};

const MajorVersion* majorVersionOf(std::string_view productVersion) {
    int number = 0;
    const char* const end = productVersion.data() + productVersion.size();
    const auto [rest, error] = std::from_chars(productVersion.data(), end, number);
    if (error != std::errc() || (rest != end && *rest != '.')) {
        return nullptr;
    }
    for (const MajorVersion& version : majorVersions) {
        if (version.major == number) {
            return &version;
        }
    }
    return nullptr;
}

} // namespace

std::string_view Generation::usualModel() const {
    return majorVersionOf(productVersion)->usualModel;
}

std::expected<Generation, std::string> Generation::make(std::string_view productVersion) {
    const MajorVersion* const known = majorVersionOf(productVersion);
    const bool bareMajor = productVersion.find('.') == std::string_view::npos;
    const std::string_view release = known && bareMajor ? known->usualRelease : productVersion;
    const auto version = platform::systemVersionForProductVersion(release);
    if (!known || !version) {
        return std::unexpected(fmt::format(
            "\"{}\" is no known iOS version; give one from 4 to 11, such as 9 or 9.3.5", productVersion));
    }
    Generation made{std::string(release), version->foundationVersion, version->coreFoundationVersion,
                    known->major};
    const AppContainerLayout& layout = appContainerLayout(made.foundationVersion);
    made.userBundles = layout.userAppBundles;
    made.userData = layout.userAppData;
    made.pluginData = layout.pluginData;
    made.groupData = layout.userGroupData;
    made.systemData = layout.systemAppData;
    made.systemGroupData = layout.systemGroupData;
    return made;
}

} // namespace ozdevice
