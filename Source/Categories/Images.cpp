#include "Categories/Images.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using platform::Color;
using platform::Image;
using platform::ImageSize;
using platform::PixelSize;

namespace {

constexpr size_t channels = Image::channels;

uint32_t pixelsFor(double points, double scale) {
    // A hair above a whole number comes from reckoning alone.
    return static_cast<uint32_t>(
        std::clamp(std::ceil(points * scale - 1e-6), 1.0, double{greatestImageSide}));
}

PixelSize pixelsFor(ImageSize size, double scale) {
    return {pixelsFor(size.width, scale), pixelsFor(size.height, scale)};
}

uint8_t byteOf(double value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * UINT8_MAX));
}

double partOf(uint8_t byte) {
    return static_cast<double>(byte) / UINT8_MAX;
}

/// Which pixels of a line a pixel of the new one is made of, and how much of each.
struct Mixture {
    size_t first = 0;
    std::vector<float> weights;
};

std::vector<Mixture> mixturesFor(uint32_t from, uint32_t to) {
    std::vector<Mixture> mixtures(to);
    const double ratio = static_cast<double>(from) / to;
    const double reach = std::max(1.0, ratio);
    for (uint32_t index = 0; index < to; ++index) {
        auto& [first, weights] = mixtures[index];
        const double centre = (index + 0.5) * ratio - 0.5;
        first = static_cast<size_t>(std::max(0.0, std::ceil(centre - reach)));
        const size_t last = std::min<size_t>(from - 1, static_cast<size_t>(std::floor(centre + reach)));
        double sum = 0;
        for (size_t place = first; place <= last; ++place) {
            const double weight = 1 - std::abs(static_cast<double>(place) - centre) / reach;
            weights.push_back(static_cast<float>(weight));
            sum += weight;
        }
        for (float& weight : weights) {
            weight /= static_cast<float>(sum);
        }
    }
    return mixtures;
}

/// The image in so many pixels.
Image::Pixels scaledPixels(const Image& image, PixelSize size) {
    const auto [oldWidth, oldHeight] = image.pixelSize();
    const auto columns = mixturesFor(oldWidth, size.width);
    const auto rows = mixturesFor(oldHeight, size.height);
    std::vector<float> narrow(size_t{size.width} * oldHeight * channels);
    float* made = narrow.data();
    for (size_t y = 0; y < oldHeight; ++y) {
        for (const auto& [first, weights] : columns) {
            for (size_t index = 0; index < weights.size(); ++index) {
                const uint8_t* pixel = image.pixelAt(first + index, y);
                for (size_t channel = 0; channel < channels; ++channel) {
                    made[channel] += weights[index] * static_cast<float>(pixel[channel]);
                }
            }
            made += channels;
        }
    }
    const size_t line = size_t{size.width} * channels;
    Image::Pixels pixels;
    pixels.reserve(line * size.height);
    for (const auto& [first, weights] : rows) {
        for (size_t place = 0; place < line; ++place) {
            float sum = 0;
            for (size_t index = 0; index < weights.size(); ++index) {
                sum += weights[index] * narrow[(first + index) * line + place];
            }
            pixels.push_back(static_cast<uint8_t>(std::lround(std::clamp(sum, 0.0F, float{UINT8_MAX}))));
        }
    }
    return pixels;
}

/// How much of a pixel lies inside of a rectangle with rounded corners that is `inset` smaller at each edge.
double coverage(double x, double y, PixelSize size, double radius, double inset) {
    const double right = size.width / 2.0 - inset;
    const double bottom = size.height / 2.0 - inset;
    const double round = std::clamp(radius - inset, 0.0, std::max(0.0, std::min(right, bottom)));
    const double overX = std::abs(x + 0.5 - size.width / 2.0) - right + round;
    const double overY = std::abs(y + 0.5 - size.height / 2.0) - bottom + round;
    const double outside = std::hypot(std::max(overX, 0.0), std::max(overY, 0.0));
    const double distance = outside + std::min(std::max(overX, overY), 0.0) - round;
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

/// Draws one pixel over another; both have their opacity multiplied in, from 0 to 1.
void drawOver(uint8_t* pixel, const double (&over)[channels]) {
    const double below = 1 - over[3];
    for (size_t channel = 0; channel < channels; ++channel) {
        pixel[channel] = byteOf(over[channel] + below * partOf(pixel[channel]));
    }
}

void drawColorOver(uint8_t* pixel, const Color& color, double amount) {
    const double alpha = color.alpha * amount;
    drawOver(pixel, {color.red * alpha, color.green * alpha, color.blue * alpha, alpha});
}

} // namespace

Image imageWithSize(ImageSize size, const Color& color, double scale) {
    const PixelSize whole = pixelsFor(size, scale);
    Image::Pixels pixels(size_t{whole.width} * whole.height * channels);
    for (size_t place = 0; place < pixels.size(); place += channels) {
        drawColorOver(pixels.data() + place, color, 1);
    }
    return {whole, std::move(pixels), scale};
}

Image resized(const Image& image, ImageSize size, double scale) {
    const PixelSize whole = pixelsFor(size, scale);
    return whole == image.pixelSize() ? image.withScale(scale)
                                      : Image(whole, scaledPixels(image, whole), scale);
}

Image resized(const Image& image, ImageSize size, const ImageBorder& border, double scale) {
    const Image plain = resized(image, size, scale);
    const PixelSize whole = plain.pixelSize();
    Image::Pixels pixels = plain.pixels();
    uint8_t* pixel = pixels.data();
    for (uint32_t y = 0; y < whole.height; ++y) {
        for (uint32_t x = 0; x < whole.width; ++x, pixel += channels) {
            const double radius = border.cornerRadius * scale;
            const double inside = coverage(x, y, whole, radius, 0);
            const double line = inside - coverage(x, y, whole, radius, border.size * scale);
            for (size_t channel = 0; channel < channels; ++channel) {
                pixel[channel] = static_cast<uint8_t>(std::lround(pixel[channel] * inside));
            }
            drawColorOver(pixel, border.color, line);
        }
    }
    return {whole, std::move(pixels), scale};
}

std::optional<Image> cropped(const Image& image, double x, double y, ImageSize size) {
    const auto [width, height] = image.pixelSize();
    const auto edge = [&](double points, uint32_t most) {
        return static_cast<size_t>(
            std::clamp(std::round(points * image.scale()), 0.0, static_cast<double>(most)));
    };
    const size_t left = edge(x, width);
    const size_t top = edge(y, height);
    const size_t right = edge(x + size.width, width);
    const size_t bottom = edge(y + size.height, height);
    if (left >= right || top >= bottom) {
        return std::nullopt;
    }
    Image::Pixels pixels;
    pixels.reserve((right - left) * (bottom - top) * channels);
    for (size_t row = top; row < bottom; ++row) {
        const uint8_t* first = image.pixelAt(left, row);
        pixels.insert(pixels.end(), first, first + (right - left) * channels);
    }
    const PixelSize whole{static_cast<uint32_t>(right - left), static_cast<uint32_t>(bottom - top)};
    return Image(whole, std::move(pixels), image.scale());
}

Image withOverlay(const Image& image, const Image& overlay) {
    const Image over = resized(overlay, image.size(), image.scale());
    Image::Pixels pixels = image.pixels();
    for (size_t place = 0; place < pixels.size(); place += channels) {
        double values[channels];
        for (size_t channel = 0; channel < channels; ++channel) {
            values[channel] = partOf(over.pixels()[place + channel]);
        }
        drawOver(pixels.data() + place, values);
    }
    return {image.pixelSize(), std::move(pixels), image.scale()};
}

Image colored(const Image& image, const Color& color) {
    Image::Pixels pixels(image.byteCount());
    for (size_t place = 0; place < pixels.size(); place += channels) {
        drawColorOver(pixels.data() + place, color, partOf(image.pixels()[place + 3]));
    }
    return {image.pixelSize(), std::move(pixels), image.scale()};
}
