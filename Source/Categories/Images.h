#pragma once

#include "Platform/Formats/Image.h"

#include <optional>
#include <string_view>

namespace platform {
class FileManager;
}

// Additions to the platform's images. What they draw anew has `scale` pixels a point, or the image's own.

/// A file of more bytes, and a picture of more pixels in width or height, is no image.
inline constexpr uint64_t greatestImageFile = uint64_t{8} << 20U;
inline constexpr uint32_t greatestImageSide = 4096;

/// The image of a file of a device, and its scale as its name tells it ("@2x"). Where a twin of the file for
/// the screen's scale lies beside it, it is taken in its place. None for what cannot be read.
[[nodiscard]] std::optional<platform::Image> imageAtPath(platform::FileManager& fileManager,
                                                         std::string_view path, double screenScale,
                                                         uint32_t greatestSide = greatestImageSide);
/// The size of a file's picture by its header alone, in pixels.
[[nodiscard]] std::optional<platform::PixelSize> sizeOfImageAtPath(platform::FileManager& fileManager,
                                                                   std::string_view path);

/// Rounded corners, and a line inside the edge; in points.
struct ImageBorder {
    double cornerRadius = 0;
    double size = 0;
    platform::Color color{};
};

/// A plain image of a colour.
[[nodiscard]] platform::Image imageWithSize(platform::ImageSize size, const platform::Color& color,
                                            double scale);
/// The image drawn into another size, whatever its shape was.
[[nodiscard]] platform::Image resized(const platform::Image& image, platform::ImageSize size, double scale);
[[nodiscard]] platform::Image resized(const platform::Image& image, platform::ImageSize size,
                                      const ImageBorder& border, double scale);
/// What lies in a rectangle, in points; none where nothing of the image does.
[[nodiscard]] std::optional<platform::Image> cropped(const platform::Image& image, double x, double y,
                                                     platform::ImageSize size);
/// The image with another one over it, which is drawn into its size.
[[nodiscard]] platform::Image withOverlay(const platform::Image& image, const platform::Image& overlay);
/// The image's shape in one colour.
[[nodiscard]] platform::Image colored(const platform::Image& image, const platform::Color& color);
