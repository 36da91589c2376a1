#include "Platform/Formats/Image.h"

#include "Platform/Files/Error.h"

#include <utility>

namespace platform {

Image::Image(PixelSize size, Pixels pixels, double scale)
    : _pixelSize(size)
    , _scale(scale)
    , _pixels(std::make_shared<const Pixels>(std::move(pixels))) {
    OZ_REQUIRE(scale > 0);
    OZ_REQUIRE(!_pixels->empty() && _pixels->size() == size_t{size.width} * size.height * channels);
}

Image Image::withScale(double scale) const {
    OZ_REQUIRE(scale > 0);
    Image image = *this;
    image._scale = scale;
    return image;
}

} // namespace platform
