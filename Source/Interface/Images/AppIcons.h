#pragma once

#include "Interface/Images/ImageSource.h"

#include <mutex>
#include <optional>
#include <string_view>

namespace platform {
class Device;
class FileManager;
} // namespace platform
class OZAppList;

/// The icons of a device's applications, as small ones of 29 points with rounded corners. Reads files, so it
/// is for threads that may wait; any may call.
class AppIcons {
  public:
    /// In points.
    static constexpr platform::ImageSize smallIcon{.width = 29, .height = 29};

    /// An icon is drawn from any picture up to so many pixels in width and height; what is larger is none.
    static constexpr uint32_t greatestSource = 2048;
    /// The platform's smallest icon; what is smaller would only be a blot.
    static constexpr uint32_t smallestSource = 20;

    /// What is given outlives the object. The list is not loaded again as long as this is in use.
    AppIcons(platform::Device& device, const OZAppList& appList, const ImageSource& source);

    /// The icon in an application's bundle, else the program's own drawing for some of the platform's
    /// applications. None for any other, and for one that is not installed.
    [[nodiscard]] std::optional<platform::Image>
    appIconForBundleIdentifier(std::string_view identifier) const;
    /// What stands for an application without an icon. Made once.
    [[nodiscard]] platform::Image placeholderAppIcon() const;

    [[nodiscard]] double scale() const { return _scale; }
    [[nodiscard]] const ImageSource& source() const { return _source; }

  private:
    [[nodiscard]] std::optional<platform::Image> iconInBundle(std::string_view identifier) const;
    [[nodiscard]] platform::Image makePlaceholder() const;
    [[nodiscard]] platform::Image framed(const platform::Image& image) const;

    platform::Device& _device;
    const OZAppList& _appList;
    const ImageSource& _source;
    double _scale;
    mutable std::once_flag _placeholderMade;
    mutable std::optional<platform::Image> _placeholder;
};
