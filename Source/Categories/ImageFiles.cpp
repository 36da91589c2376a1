#include "Categories/Images.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/Path.h"
#include "Platform/Formats/PNGImage.h"

#include <cmath>
#include <string>

#include <fmt/format.h>

namespace {

constexpr int greatestScale = 3;

std::string scaleMark(int scale) {
    return fmt::format("@{}x", scale);
}

/// The scale that a file's name tells; 1 where it tells none.
int scaleOfName(std::string_view path) {
    const auto name = platform::nameWithoutExtension(path);
    for (int scale = greatestScale; scale > 1; --scale) {
        // Behind it may stand what kind of device the file is for.
        if (name.ends_with(scaleMark(scale)) || name.contains(scaleMark(scale) + "~")) {
            return scale;
        }
    }
    return 1;
}

/// The file beside a file without a scale that suits the screen best; the file itself where there is none.
std::string fileForScreen(platform::FileManager& fileManager, std::string_view path, double screenScale) {
    const auto extension = platform::pathExtension(path);
    if (scaleOfName(path) == 1 && !extension.empty()) {
        for (int scale = std::min(greatestScale, static_cast<int>(std::ceil(screenScale))); scale > 1;
             --scale) {
            auto twin =
                fmt::format("{}{}.{}", platform::withoutPathExtension(path), scaleMark(scale), extension);
            if (fileManager.fileExistsAtPath(twin)) {
                return twin;
            }
        }
    }
    return std::string(path);
}

} // namespace

std::optional<platform::Image> imageAtPath(platform::FileManager& fileManager, std::string_view path,
                                           double screenScale, uint32_t greatestSide) {
    const auto file = fileForScreen(fileManager, path, screenScale);
    const auto bytes = fileManager.contentsAtPath(file, greatestImageFile);
    if (!bytes) {
        return std::nullopt;
    }
    const auto image = platform::imageFromPNG(*bytes, greatestSide);
    return image ? std::optional(image->withScale(scaleOfName(file))) : std::nullopt;
}

std::optional<platform::PixelSize> sizeOfImageAtPath(platform::FileManager& fileManager,
                                                     std::string_view path) {
    auto file = fileManager.openForReading(path);
    const auto header = file ? file->readUpTo(platform::pngHeaderBytes) : std::unexpected(file.error());
    return header ? platform::sizeOfPNG(*header) : std::nullopt;
}
