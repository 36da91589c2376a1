#include "Interface/Images/OZImageCache.h"

#include "Categories/FileURLs.h"
#include "Categories/Images.h"
#include "Interface/Images/ImageURLs.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <utility>

using platform::Image;

namespace {

constexpr std::string_view themesIdentifier = "winterboard";
constexpr std::string_view themesIcon =
    "/System/Library/PreferenceBundles/WinterBoardSettings.bundle/icon7.png";

} // namespace

OZImageCache::OZImageCache(platform::Device& device, const OZAppList& appList, const ImageSource& source,
                           size_t byteLimit)
    : _device(device)
    , _icons(device, appList, source)
    , _byteLimit(byteLimit)
    , _memoryWarning(device.notificationCenter(), memoryWarningNotification, nullptr,
                     [this](const platform::Notification&) { removeAllObjects(); })
    , _imageLoadQueue(platform::Queue::serial("com.ozlabs.imageLoadQueue")) {}

OZImageCache::~OZImageCache() = default;

void OZImageCache::setLoader(Loader loader, std::string_view url) {
    const std::lock_guard lock(_mutex);
    _loaders.insert_or_assign(std::string(url), std::move(loader));
}

std::optional<Image> OZImageCache::imageWithURL(std::string_view url) {
    if (auto cached = cachedImage(url)) {
        return cached;
    }
    auto loader = loaderForURL(url);
    // Without the lock: a loader may wait for a file, and may ask this cache.
    auto image = loader ? loader() : std::nullopt;
    if (image) {
        keep(url, *image, std::move(loader));
    }
    return image;
}

std::optional<Image> OZImageCache::imageWithURL(std::string_view url, std::optional<Image> placeholder,
                                                Completion completion) {
    if (auto cached = cachedImage(url)) {
        return cached;
    }
    loadLater(std::string(url), std::move(completion));
    return placeholder;
}

void OZImageCache::cacheImageWithURL(std::string_view url) {
    std::ignore = imageWithURL(url);
}

void OZImageCache::removeCachedImageWithURL(std::string_view url) {
    const std::lock_guard lock(_mutex);
    if (const auto place = _places.find(url); place != _places.end()) {
        drop(place);
    }
}

void OZImageCache::removeAllObjects() {
    const std::lock_guard lock(_mutex);
    _places.clear();
    _entries.clear();
    _byteCount = 0;
}

bool OZImageCache::hasCachedImageWithURL(std::string_view url) const {
    const std::lock_guard lock(_mutex);
    return _places.contains(url);
}

bool OZImageCache::hasLoaderForURL(std::string_view url) const {
    const std::lock_guard lock(_mutex);
    return _loaders.contains(url);
}

Image OZImageCache::iconForAppWithIdentifier(std::string_view identifier) const {
    auto icon = _icons.appIconForBundleIdentifier(identifier);
    return icon ? *std::move(icon) : placeholderAppIcon();
}

Image OZImageCache::iconForAppWithIdentifier(std::string_view identifier, bool cache) {
    auto icon = cache ? imageWithURL(appIconURLWithIdentifier(identifier)) : std::nullopt;
    return icon ? *std::move(icon) : iconForAppWithIdentifier(identifier);
}

Image OZImageCache::iconForAppWithIdentifier(std::string_view identifier, bool cache, Completion completion) {
    if (cache) {
        return *imageWithURL(appIconURLWithIdentifier(identifier), placeholderAppIcon(),
                             std::move(completion));
    }
    _imageLoadQueue.async([this, name = std::string(identifier), done = std::move(completion)] {
        auto icon = iconForAppWithIdentifier(name);
        _device.mainQueue().post([icon = std::move(icon), done] { done(icon); });
    });
    return placeholderAppIcon();
}

std::optional<Image> OZImageCache::cachedImage(std::string_view url) {
    const std::lock_guard lock(_mutex);
    const auto place = _places.find(url);
    if (place == _places.end()) {
        return std::nullopt;
    }
    _entries.splice(_entries.begin(), _entries, place->second);
    return place->second->image;
}

OZImageCache::Loader OZImageCache::loaderForURL(std::string_view url) const {
    {
        const std::lock_guard lock(_mutex);
        if (const auto stored = _loaders.find(url); stored != _loaders.end()) {
            return stored->second;
        }
    }
    return loaderByScheme(url);
}

OZImageCache::Loader OZImageCache::loaderByScheme(std::string_view url) const {
    const auto scheme = schemeOfURL(url);
    if (scheme == appIconScheme) {
        const auto host = hostOfURL(url);
        return host.empty() ? Loader() : [this, identifier = std::string(host)]() -> std::optional<Image> {
            return iconForAppWithIdentifier(identifier);
        };
    }
    const auto path = pathOfURL(url);
    if (!path) {
        return {};
    }
    if (scheme == iconScheme) {
        return [this, file = *path] { return iconAtPath(file); };
    }
    if (scheme == fileScheme) {
        return [this, file = *path] {
            auto fileManager = _device.fileManager();
            return imageAtPath(fileManager, file, _icons.scale());
        };
    }
    if (scheme == namedImageScheme) {
        return [this, name = std::string(platform::lastPathComponent(*path))] {
            return _icons.source().imageNamed(name);
        };
    }
    return {};
}

void OZImageCache::keep(std::string_view url, const Image& image, Loader loader) {
    const std::lock_guard lock(_mutex);
    _loaders.insert_or_assign(std::string(url), std::move(loader));
    if (const auto old = _places.find(url); old != _places.end()) {
        drop(old);
    }
    // It would drive out all others, and then itself.
    if (image.byteCount() > _byteLimit) {
        return;
    }
    _entries.push_front({.url = std::string(url), .image = image});
    _places.emplace(_entries.front().url, _entries.begin());
    _byteCount += image.byteCount();
    while (_byteCount > _byteLimit) {
        drop(_places.find(_entries.back().url));
    }
}

void OZImageCache::drop(std::map<std::string_view, Entries::iterator>::iterator place) {
    const auto entry = place->second;
    _byteCount -= entry->image.byteCount();
    _places.erase(place);
    _entries.erase(entry);
}

void OZImageCache::loadLater(std::string url, Completion completion) {
    _imageLoadQueue.async([this, name = std::move(url), done = std::move(completion)] {
        auto image = imageWithURL(name);
        if (done) {
            _device.mainQueue().post([image = std::move(image), done] { done(image); });
        }
    });
}

std::optional<Image> OZImageCache::iconAtPath(std::string_view path) const {
    auto fileManager = _device.fileManager();
    auto image = imageAtPath(fileManager, path, _icons.scale(), AppIcons::greatestSource);
    const auto most = AppIcons::smallIcon;
    const bool isLarge = image && (image->size().width > most.width || image->size().height > most.height);
    return isLarge ? resized(*image, most, _icons.scale()) : image;
}

std::unique_ptr<OZImageCache> makeImageCache(OZModelBuilder& builder, const ImageSource& source) {
    auto cache = std::make_unique<OZImageCache>(builder.device(), builder.appList(), source);
    cache->setLoader(
        [&device = builder.device(), owner = cache.get(),
         scale = source.screenScale()]() -> std::optional<Image> {
            auto fileManager = device.fileManager();
            auto image = imageAtPath(fileManager, themesIcon, scale);
            return image ? std::move(*image) : owner->placeholderAppIcon();
        },
        appIconURLWithIdentifier(themesIdentifier));
    return cache;
}
