#include "Model/Apps/OZAppList.h"
#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device.h"

#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>
#include <unicode/regex.h>

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

// Its bundle only looks like one: what it holds is no payload of an application.
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

// Turns the path of an image into that of its twin of another scale. A name is bytes: each is a character of
// its own here, and comes back as it was.
class TwinPaths {
  public:
    TwinPaths(std::string_view suffixes, std::string_view twinsSuffix)
        : _matcher(characters(suffixes), UREGEX_CASE_INSENSITIVE, _status)
        , _twinsSuffix(characters(twinsSuffix)) {}

    [[nodiscard]] std::string twinOf(std::string_view path) {
        const icu::UnicodeString text = characters(path);
        _matcher.reset(text);
        const icu::UnicodeString twin = _matcher.replaceAll(_twinsSuffix, _status);
        std::string bytes;
        for (int32_t index = 0; index < twin.length(); ++index) {
            bytes += static_cast<char>(twin.charAt(index));
        }
        return bytes;
    }

  private:
    static icu::UnicodeString characters(std::string_view bytes) {
        icu::UnicodeString text;
        for (const char byte : bytes) {
            text += static_cast<char16_t>(static_cast<unsigned char>(byte));
        }
        return text;
    }

    UErrorCode _status = U_ZERO_ERROR;
    icu::RegexMatcher _matcher;
    icu::UnicodeString _twinsSuffix;
};

// Which paths below a folder are there. Each folder is listed once, however many of its names are asked for.
class Listings {
  public:
    Listings(platform::FileManager& fileManager, std::shared_ptr<const platform::Folder> top)
        : _fileManager(fileManager)
        , _top(std::move(top)) {}

    [[nodiscard]] bool contain(const std::string& path) {
        const size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash);
        auto listing = _namesByFolder.find(folder);
        if (listing == _namesByFolder.end()) {
            listing = _namesByFolder.emplace(folder, namesIn(folder)).first;
        }
        return listing->second.contains(path.substr(slash + 1));
    }

  private:
    using Names = std::unordered_set<std::string>;

    [[nodiscard]] Names namesIn(const std::string& folder) const {
        const auto item = folder.empty() ? platform::Item(_top, ".") : _fileManager.itemBelow(_top, folder);
        const auto opened = item ? item->openFolder() : platform::failure(ENOENT);
        const auto names = opened ? (*opened)->entries() : platform::failure(ENOENT);
        return names ? Names(names->begin(), names->end()) : Names();
    }

    platform::FileManager& _fileManager;
    std::shared_ptr<const platform::Folder> _top;
    std::unordered_map<std::string, Names> _namesByFolder;
};

// The twins that are there, in the order of the images. A folder with a suffix in its name is renamed like a
// file, so what is in it has no twin; neither has anything in a bundle of such a name.
FoundPaths twinsOf(const FoundPaths& images, TwinPaths& paths, platform::FileManager& fileManager) {
    FoundPaths twins{.folder = images.folder, .prefix = images.prefix, .names = {}};
    if (paths.twinOf(images.prefix) != images.prefix) {
        return twins;
    }
    Listings listings(fileManager, images.folder);
    for (const auto& image : images.names) {
        std::string twin = paths.twinOf(image);
        if (listings.contain(twin)) {
            twins.names.push_back(std::move(twin));
        }
    }
    return twins;
}

} // namespace

OZCore::Paths OZCore::bundlePathsForImageRemoval() const {
    Paths paths;
    if (_appList != nullptr) {
        for (const auto& app : _appList->appList({.typeMask = OZAppTypeMask::all,
                                                  .excludingIdentifiers = {jailbreakApplication},
                                                  .filterMask = OZAppFilterMask::noApple,
                                                  .exclusionMask = OZExclusionMask::images})) {
            paths.push_back(app->bundlePath());
        }
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
    TwinPaths paths(betterSuffixes, suffixOf(target));
    for (const auto& images : findImages(fmt::format(fmt::runtime(scaledImages), betterSuffixes))) {
        quickDel(twinsOf(images, paths, *this));
    }
}

void OZCore::removeiPadImages() {
    quickDelAll(findImages(iPadImages));
}

void OZCore::remove4InchImages() {
    quickDelAll(findImages(fourInchImages));
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
