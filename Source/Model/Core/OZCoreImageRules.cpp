#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Core/ImageTwins.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device.h"

#include <fmt/format.h>

// Which images of an application go. A search compares whole paths without regard to case.

using platform::FoundPaths;

namespace {

// "{}" takes the suffixes of the scales.
constexpr const char* scaledImages =
    "^.*{}(~iphone|~ipad)?\\.(png|jpg|jpeg|nib|tif|tiff|gif|bmp|bmpf|ico|cur|xbm)$";
constexpr std::string_view iPadImages = "^.*([-_~]ipad|icon-7[26]|Default-(Landscape|Portrait))(@2x)?"
                                        "\\.(png|jpe?g|nib|tiff?|gif|bmpf?|ico|cur|xbm)$";
constexpr std::string_view fourInchImages =
    "^.*568h@2x.*\\.(png|jpg|jpeg|nib|tif|tiff|gif|bmp|bmpf|ico|cur|xbm)$";

// A jailbreak's own application: it stays whole.
constexpr const char* jailbreakApplication = "io.pangu.nvwastone";

constexpr const char* artworkName = "iTunesArtwork";

std::optional<unsigned> scaleOf(const OZDeviceInformation& device) {
    if (device.isRetina3xDevice() == OZTriState::yes) {
        return 3;
    }
    if (device.isRetina2xDevice() == OZTriState::yes) {
        return 2;
    }
    if (device.isNonRetinaDevice() == OZTriState::yes) {
        return 1;
    }
    return std::nullopt;
}

// Images of the lowest scale have no suffix.
std::string suffixOf(unsigned scale) {
    return scale == 1 ? std::string() : fmt::format("@{}x", scale);
}

// The suffixes of all scales from one down to another, as alternatives of a regular expression.
std::string suffixesBetween(unsigned best, unsigned worst) {
    std::string suffixes = suffixOf(best);
    for (unsigned scale = best - 1; scale >= worst; --scale) {
        suffixes += "|" + suffixOf(scale);
    }
    return best == worst ? suffixes : "(" + suffixes + ")";
}

} // namespace

OZCore::Paths OZCore::bundlePathsForImageRemoval() const {
    Paths paths;
    for (const auto& app : _appList.appList({.typeMask = OZAppTypeMask::all,
                           .excludingIdentifiers = {jailbreakApplication},
                           .filterMask = OZAppFilterMask::noApple,
                           .exclusionMask = OZExclusionMask::images})) {
        paths.push_back(app->bundlePath());
    }
    return paths;
}

std::vector<FoundPaths> OZCore::findImages(std::string_view regex) {
    return find(bundlePathsForImageRemoval(),
                {"-regextype", "posix-extended", "-iregex", std::string(regex), "-type", "f", "-print"});
}

void OZCore::quickDelAll(const std::vector<FoundPaths>& found) {
    for (const auto& paths : found) {
        quickDel(paths);
    }
}

void OZCore::removeImagesOfScale(unsigned target) {
    const auto scale = scaleOf(OZDeviceInformation(_device.facts().hardwareModel));
    // What an unknown device shows is unknown, too. What a device shows stays.
    if (!scale || target == *scale) {
        return;
    }
    if (target > *scale) {
        quickDelAll(findImages(fmt::format(fmt::runtime(scaledImages), suffixOf(target))));
        return;
    }
    // The better images are found and stay; those that they make redundant go.
    const std::string betterSuffixes = suffixesBetween(*scale, target + 1);
    ImageTwins twins(*this, betterSuffixes, suffixOf(target));
    for (const auto& images : findImages(fmt::format(fmt::runtime(scaledImages), betterSuffixes))) {
        quickDel(twins.twinsOf(images));
    }
}

// Of a device without a model nobody knows what it shows.
void OZCore::removeiPadImages() {
    if (!_device.facts().hardwareModel.empty()) {
        quickDelAll(findImages(iPadImages));
    }
}

void OZCore::remove4InchImages() {
    if (!_device.facts().hardwareModel.empty()) {
        quickDelAll(findImages(fourInchImages));
    }
}

void OZCore::removeiTunesArtwork() {
    const Paths bundles = bundlePathsForImageRemoval();
    Paths besideBundles;
    for (const auto& bundle : bundles) {
        const size_t parentLength = bundle.size() - platform::lastPathComponent(bundle).size();
        besideBundles.push_back(platform::joinPath(bundle.substr(0, parentLength), artworkName));
    }
    del(besideBundles);
    quickDelAll(find(bundles, {"-type", "f", "-name", artworkName}));
}
