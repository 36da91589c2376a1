#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace platform {

/// From 0 to 1 each; the opacity is not multiplied in.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Color&) const = default;
};

/// In points.
struct ImageSize {
    double width = 0;
    double height = 0;
    bool operator==(const ImageSize&) const = default;
};

/// In pixels.
struct PixelSize {
    uint32_t width = 0;
    uint32_t height = 0;
    bool operator==(const PixelSize&) const = default;
};

/// A picture. It never changes, and its copies share the pixels, so that it is cheap to pass from thread to
/// thread.
class Image {
  public:
    /// Bytes of a pixel: red, green, blue and opacity, which is multiplied into the colours.
    static constexpr size_t channels = 4;
    using Pixels = std::vector<uint8_t>;

    /// The pixels are rows from the top, without gaps between them; `scale` is how many make up a point.
    /// Throws AssertionFailure where there are more or fewer than the size tells, or none.
    Image(PixelSize size, Pixels pixels, double scale = 1);

    [[nodiscard]] PixelSize pixelSize() const { return _pixelSize; }
    [[nodiscard]] double scale() const { return _scale; }
    [[nodiscard]] ImageSize size() const { return {_pixelSize.width / _scale, _pixelSize.height / _scale}; }
    [[nodiscard]] size_t byteCount() const { return _pixels->size(); }
    [[nodiscard]] const Pixels& pixels() const { return *_pixels; }
    /// The pixels for those that outlive the image.
    [[nodiscard]] std::shared_ptr<const Pixels> sharedPixels() const { return _pixels; }
    /// The four bytes of a pixel.
    [[nodiscard]] const uint8_t* pixelAt(size_t x, size_t y) const {
        return _pixels->data() + (y * _pixelSize.width + x) * channels;
    }

    /// The same pixels, more or fewer of them to a point.
    [[nodiscard]] Image withScale(double scale) const;

  private:
    PixelSize _pixelSize;
    double _scale;
    std::shared_ptr<const Pixels> _pixels;
};

} // namespace platform
