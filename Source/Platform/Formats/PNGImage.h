#pragma once

#include "Platform/Files/Error.h"
#include "Platform/Formats/Image.h"

#include <optional>
#include <string_view>

namespace platform {

// Pictures of the PNG format, those included that the platform's own tools have "crushed": a chunk "CgBI"
// comes first, the compressed data stands without zlib's header and checksum, blue comes before red, and the
// opacity is multiplied into the colours. The bytes are a device's and may say anything.

/// So many bytes of a file have its size in them, if it has one.
inline constexpr size_t pngHeaderBytes = 64;

/// What a file's header tells of its size; nothing is decoded. None for no PNG.
[[nodiscard]] std::optional<PixelSize> sizeOfPNG(std::string_view header);

/// Decodes a whole file. One that is wider or higher than `mostPixels` is an error by its header alone
/// (EFBIG); so is a file that is damaged, cut off, or no PNG at all (EILSEQ).
[[nodiscard]] Result<Image> imageFromPNG(std::string_view bytes, uint32_t mostPixels);

} // namespace platform
