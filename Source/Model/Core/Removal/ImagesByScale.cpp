#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Core/ImageTwins.h"
#include "Model/Core/Removal/RemovalActions.h"
#include "Model/Core/RunContext.h"

#include <fmt/format.h>

// Which images of an application go. A search compares whole paths without regard to case.

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

CleanupRun::Paths bundlePathsForImageRemoval(const OZAppList& appList) {
    CleanupRun::Paths paths;
    for (const auto& app : appList.appList({.typeMask = OZAppTypeMask::all,
                           .excludingIdentifiers = {jailbreakApplication},
                           .filterMask = OZAppFilterMask::noApple,
                           .exclusionMask = OZExclusionMask::images})) {
        paths.push_back(app->bundlePath());
    }
    return paths;
}

std::vector<FoundPaths> findImages(const RunContext& context, std::string_view regex) {
    return context.run.find(
        bundlePathsForImageRemoval(context.appList),
        {"-regextype", "posix-extended", "-iregex", std::string(regex), "-type", "f", "-print"});
}

void quickDelAll(CleanupRun& run, const std::vector<FoundPaths>& found) {
    for (const auto& paths : found) {
        run.quickDel(paths);
    }
}

void removeImagesOfScale(const RunContext& context, unsigned target) {
    const auto scale = scaleOf(OZDeviceInformation(context.facts.hardwareModel));
    // What an unknown device shows is unknown, too. What a device shows stays.
    if (!scale || target == *scale) {
        return;
    }
    if (target > *scale) {
        quickDelAll(context.run,
                    findImages(context, fmt::format(fmt::runtime(scaledImages), suffixOf(target))));
        return;
    }
    // The better images are found and stay; those that they make redundant go.
    const std::string betterSuffixes = suffixesBetween(*scale, target + 1);
    ImageTwins twins(context.run.tree(), betterSuffixes, suffixOf(target));
    for (const auto& images : findImages(context, fmt::format(fmt::runtime(scaledImages), betterSuffixes))) {
        context.run.quickDel(twins.twinsOf(images));
    }
}

// Of a device without a model nobody knows what it shows.
void removeImagesWhereModelIsKnown(const RunContext& context, std::string_view regex) {
    if (!context.facts.hardwareModel.empty()) {
        quickDelAll(context.run, findImages(context, regex));
    }
}

} // namespace

void remove3xImages(const RunContext& context) {
    removeImagesOfScale(context, 3);
}

void remove2xImages(const RunContext& context) {
    removeImagesOfScale(context, 2);
}

void remove1xImages(const RunContext& context) {
    removeImagesOfScale(context, 1);
}

void removeiPadImages(const RunContext& context) {
    removeImagesWhereModelIsKnown(context, iPadImages);
}

void remove4InchImages(const RunContext& context) {
    removeImagesWhereModelIsKnown(context, fourInchImages);
}

void removeiTunesArtwork(const RunContext& context) {
    const CleanupRun::Paths bundles = bundlePathsForImageRemoval(context.appList);
    CleanupRun::Paths besideBundles;
    for (const auto& bundle : bundles) {
        const size_t parentLength = bundle.size() - platform::lastPathComponent(bundle).size();
        besideBundles.push_back(platform::joinPath(bundle.substr(0, parentLength), artworkName));
    }
    context.run.del(besideBundles);
    quickDelAll(context.run, context.run.find(bundles, {"-type", "f", "-name", artworkName}));
}
