// Pictures: what a whole file gives is as large as its header says. Checksums would keep the fuzzer from what
// stands behind them, so each file is read once as it is, and once with right ones.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Platform/Formats/PNGImage.h"

#include <string>

#include <zlib.h>

namespace {

constexpr uint32_t mostPixels = 256;
constexpr size_t signatureBytes = 8;
/// Length and name before a chunk's data, and the checksum behind it.
constexpr size_t headBytes = 8;
constexpr size_t sumBytes = 4;

std::string withRightSums(std::string file) {
    const auto byteAt = [&](size_t place) { return static_cast<uint8_t>(file[place]); };
    size_t place = signatureBytes;
    while (place + headBytes + sumBytes <= file.size()) {
        const size_t length = size_t{byteAt(place)} << 24U | size_t{byteAt(place + 1)} << 16U |
                              size_t{byteAt(place + 2)} << 8U | byteAt(place + 3);
        const size_t end = place + headBytes + length;
        if (end + sumBytes > file.size()) {
            break;
        }
        const auto sum = ::crc32(0, reinterpret_cast<const Bytef*>(file.data()) + place + 4,
                                 static_cast<uInt>(length + 4));
        for (size_t index = 0; index < sumBytes; ++index) {
            file[end + index] = static_cast<char>(sum >> (24 - 8 * index));
        }
        place = end + sumBytes;
    }
    return file;
}

void decode(std::string_view bytes) {
    const auto header = platform::sizeOfPNG(bytes.substr(0, platform::pngHeaderBytes));
    const auto image = platform::imageFromPNG(bytes, mostPixels);
    if (!image) {
        return;
    }
    require(header == image->pixelSize());
    for (size_t place = 0; place < image->byteCount(); ++place) {
        require(image->pixels()[place] <= image->pixels()[place | 3U]);
    }
}

} // namespace

void readInput(std::string_view bytes) {
    decode(bytes);
    decode(withRightSums(std::string(bytes)));
}
