#pragma once

#include "Interface/Images/AppIcons.h"
#include "Platform/Threads/NotificationCenter.h"
#include "Platform/Threads/Queue.h"

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

class OZModelBuilder;

/// The one source of images for the screens: keeps the images of URLs (Images/ImageURLs.h, and files), and
/// remembers how each was made, so that it can be made again when it had to go. Any thread may call; what a
/// name says is asynchronous runs on a serial queue of the cache, and its completions on the main queue.
class OZImageCache {
  public:
    using Loader = std::function<std::optional<platform::Image>()>;
    /// Is given none where there is no image.
    using Completion = std::function<void(std::optional<platform::Image> image)>;

    /// Posted when memory runs short: the images go, and the loaders stay.
    static constexpr std::string_view memoryWarningNotification =
        "UIApplicationDidReceiveMemoryWarningNotification";
    /// Beyond so many bytes the images go that nobody has asked for the longest.
    static constexpr size_t usualByteLimit = size_t{16} << 20U;

    /// What is given outlives the cache. The list is not loaded again as long as the cache lives.
    OZImageCache(platform::Device& device, const OZAppList& appList, const ImageSource& source,
                 size_t byteLimit = usualByteLimit);
    OZImageCache(const OZImageCache&) = delete;
    OZImageCache& operator=(const OZImageCache&) = delete;
    /// Waits for the image that is being loaded; those that are still to come are not, and their completions
    /// are dropped.
    ~OZImageCache();

    /// Takes the place of the loader that the URL would have by its scheme.
    void setLoader(Loader loader, std::string_view url);
    /// The image, loaded by the calling thread where it is not cached.
    std::optional<platform::Image> imageWithURL(std::string_view url);
    /// The image, where it is cached; the completion is not called then. Else the placeholder, and the
    /// completion, which may be null, is called with the image later.
    std::optional<platform::Image>
    imageWithURL(std::string_view url, std::optional<platform::Image> placeholder, Completion completion);
    void cacheImageWithURL(std::string_view url);
    void removeCachedImageWithURL(std::string_view url);
    void removeAllObjects();
    [[nodiscard]] bool hasCachedImageWithURL(std::string_view url) const;
    [[nodiscard]] bool hasLoaderForURL(std::string_view url) const;

    /// An application's icon, else the placeholder; not kept here.
    [[nodiscard]] platform::Image iconForAppWithIdentifier(std::string_view identifier) const;
    /// The same, kept or not.
    platform::Image iconForAppWithIdentifier(std::string_view identifier, bool cache);
    /// At once what is cached, else the placeholder, which is followed by a call of the completion. Whoever
    /// shows the image asks there whether it is still wanted.
    platform::Image iconForAppWithIdentifier(std::string_view identifier, bool cache, Completion completion);

    /// How many pixels of the screen make up a point.
    [[nodiscard]] double screenScale() const { return _icons.scale(); }
    [[nodiscard]] platform::Image placeholderAppIcon() const { return _icons.placeholderAppIcon(); }

  private:
    struct Entry {
        std::string url;
        platform::Image image;
    };
    using Entries = std::list<Entry>;

    std::optional<platform::Image> cachedImage(std::string_view url);
    /// None for a URL of which nothing can be made.
    [[nodiscard]] Loader loaderForURL(std::string_view url) const;
    [[nodiscard]] Loader loaderByScheme(std::string_view url) const;
    void keep(std::string_view url, const platform::Image& image, Loader loader);
    void drop(std::map<std::string_view, Entries::iterator>::iterator place);
    void loadLater(std::string url, Completion completion);
    [[nodiscard]] std::optional<platform::Image> iconAtPath(std::string_view path) const;

    platform::Device& _device;
    AppIcons _icons;
    size_t _byteLimit;
    mutable std::mutex _mutex;
    // The last one that was asked for comes first; the places are found by the entries' own URLs.
    Entries _entries;
    std::map<std::string_view, Entries::iterator> _places;
    size_t _byteCount = 0;
    std::map<std::string, Loader, std::less<>> _loaders;
    platform::Observation _memoryWarning;
    // Last, so that its thread has ended before what it uses is gone.
    platform::Queue _imageLoadQueue;
};

/// The cache for the screens on a builder's device, with the loaders that a device needs beyond those by
/// scheme. Builds the list of applications, if that has not been done; to be called on the main thread. Both
/// outlive the cache.
[[nodiscard]] std::unique_ptr<OZImageCache> makeImageCache(OZModelBuilder& builder,
                                                           const ImageSource& source);
