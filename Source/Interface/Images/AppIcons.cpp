#include "Interface/Images/AppIcons.h"

#include "Categories/Images.h"
#include "Model/Apps/AppIconFiles.h"
#include "Model/Apps/OZAppList.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <utility>
#include <vector>

using platform::Image;

namespace {

/// So many files are tried where the better ones are damaged.
constexpr size_t mostTries = 4;

constexpr platform::Color iconBorderColor{.alpha = 0.2};
constexpr double iconBorderSize = 0.5;
constexpr double cornerRadius = 6.524999827;
constexpr double oldCornerRadius = 4.53125;
constexpr std::string_view oldPlaceholderApp = "com.apple.WebSheet";
constexpr platform::Color plainPlaceholder{.red = 0.8, .green = 0.8, .blue = 0.8};

struct DrawnIcon {
    std::string_view identifier;
    std::string_view name;
};

/// Applications that rows of the screens stand for, on a device whose own icons cannot be read.
constexpr DrawnIcon drawnIcons[] = {
    {"com.apple.AppStore", "StoreAppIcon"},          {"com.apple.MobileSMS", "MessagesAppIcon"},
    {"com.apple.Preferences", "PreferencesAppIcon"}, {"com.apple.mobilesafari", "BrowserAppIcon"},
    {"com.saurik.Cydia", "PackagesAppIcon"},
};

/// The best of the files first: the smallest that has all the pixels, and behind those that have, the
/// largest.
std::vector<std::string> filesByFitness(platform::FileManager& fileManager, std::vector<std::string> files,
                                        uint32_t pixels) {
    using Rank = std::pair<bool, int64_t>;
    std::vector<std::pair<Rank, std::string>> ranked;
    for (auto& file : files) {
        const auto size = sizeOfImageAtPath(fileManager, file);
        const int64_t side = size ? std::min(size->width, size->height) : 0;
        if (side >= AppIcons::smallestSource) {
            const bool isSmall = side < pixels;
            ranked.emplace_back(Rank{isSmall, isSmall ? -side : side}, std::move(file));
        }
    }
    std::ranges::stable_sort(ranked, {}, &std::pair<Rank, std::string>::first);
    std::vector<std::string> sorted;
    for (auto& [rank, file] : ranked) {
        sorted.push_back(std::move(file));
    }
    return sorted;
}

} // namespace

AppIcons::AppIcons(platform::Device& device, const OZAppList& appList, const ImageSource& source)
    : _device(device)
    , _appList(appList)
    , _source(source)
    , _scale(source.screenScale()) {}

std::optional<Image> AppIcons::appIconForBundleIdentifier(std::string_view identifier) const {
    if (auto icon = iconInBundle(identifier)) {
        return icon;
    }
    const auto* drawn = std::ranges::find(drawnIcons, identifier, &DrawnIcon::identifier);
    return drawn == std::end(drawnIcons) ? std::nullopt : _source.imageNamed(drawn->name);
}

Image AppIcons::placeholderAppIcon() const {
    std::call_once(_placeholderMade, [this] { _placeholder = makePlaceholder(); });
    return *_placeholder;
}

std::optional<Image> AppIcons::iconInBundle(std::string_view identifier) const {
    const auto app = _appList.appWithIdentifier(identifier);
    if (!app) {
        return std::nullopt;
    }
    // A handle of its own: one serves one thread.
    auto fileManager = _device.fileManager();
    const auto pixels = static_cast<uint32_t>(smallIcon.width * _scale);
    auto files = filesByFitness(fileManager, iconFilesOfBundle(fileManager, app->bundlePath()), pixels);
    files.resize(std::min(files.size(), mostTries));
    for (const auto& file : files) {
        if (const auto image = imageAtPath(fileManager, file, 1, greatestSource)) {
            return framed(*image);
        }
    }
    return std::nullopt;
}

Image AppIcons::makePlaceholder() const {
    const bool isOld = _device.facts().foundationVersion <= ios::v6_1;
    if (auto icon = isOld ? iconInBundle(oldPlaceholderApp) : std::nullopt) {
        return *icon;
    }
    const auto drawn = _source.imageNamed("PlaceholderIcon");
    return framed(drawn ? *drawn : imageWithSize(smallIcon, plainPlaceholder, _scale));
}

Image AppIcons::framed(const Image& image) const {
    const bool isOld = _device.facts().foundationVersion <= ios::v6_1;
    const ImageBorder border{.cornerRadius = isOld ? oldCornerRadius : cornerRadius,
                             .size = iconBorderSize,
                             .color = iconBorderColor};
    return resized(image, smallIcon, border, _scale);
}
