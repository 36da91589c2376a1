#include "Platform/Formats/PNGImage.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include <png.h>

namespace platform {

namespace {

using namespace std::string_view_literals;

constexpr auto signature = "\x89PNG\r\n\x1A\n"sv;
/// What a chunk has before and behind its data: length and name, and a checksum.
constexpr size_t chunkHeadBytes = 8;
constexpr size_t chunkBytes = chunkHeadBytes + 4;
constexpr auto headerChunk = "IHDR"sv;
constexpr auto dataChunk = "IDAT"sv;
constexpr auto crushedChunk = "CgBI"sv;

// What the compressed data of a crushed file lacks, as chunks of their own: zlib's header, and a checksum,
// which nobody looks at.
constexpr auto zlibHeaderChunk = "\0\0\0\x02IDAT\x78\x01\xEC\x1A\x7E\xD2"sv;
constexpr auto zlibEndChunk = "\0\0\0\x04IDAT\0\0\0\0\xEA\x23\xE7\x07"sv;

uint32_t numberAt(std::string_view bytes, size_t place) {
    uint32_t number = 0;
    for (const char byte : bytes.substr(place, 4)) {
        number = (number << 8U) | static_cast<uint8_t>(byte);
    }
    return number;
}

std::string_view chunkName(std::string_view chunk) {
    return chunk.substr(4, 4);
}

/// Takes a chunk off the bytes, whole; what is cut off comes as far as it goes, and is empty at the end.
std::string_view takeChunk(std::string_view& bytes) {
    const uint64_t size = bytes.size() < chunkBytes ? bytes.size() : chunkBytes + numberAt(bytes, 0);
    const auto chunk = bytes.substr(0, std::min<uint64_t>(size, bytes.size()));
    bytes.remove_prefix(chunk.size());
    return chunk;
}

bool isChunk(std::string_view chunk, std::string_view name) {
    return chunk.size() >= chunkHeadBytes && chunkName(chunk) == name;
}

bool isCrushed(std::string_view bytes) {
    return bytes.starts_with(signature) && isChunk(bytes.substr(signature.size()), crushedChunk);
}

/// A crushed file as the format has it; the order and the meaning of the colours stay.
std::string uncrushed(std::string_view bytes) {
    std::string whole;
    whole.reserve(bytes.size() + zlibHeaderChunk.size() + zlibEndChunk.size());
    whole += signature;
    bytes.remove_prefix(signature.size());
    bool isInData = false;
    while (!bytes.empty()) {
        const auto chunk = takeChunk(bytes);
        const bool isData = isChunk(chunk, dataChunk);
        if (isData != isInData) {
            whole += isData ? zlibHeaderChunk : zlibEndChunk;
            isInData = isData;
        }
        if (!isChunk(chunk, crushedChunk)) {
            whole += chunk;
        }
    }
    return whole;
}

/// One picture that libpng reads. It tells of errors by a jump, which must not pass over any object's end:
/// the functions below that it may leave hold numbers and pointers alone.
class Reader {
  public:
    Reader(std::string_view bytes, bool isCrushed)
        : _bytes(bytes)
        , _isCrushed(isCrushed)
        , _png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, passOver))
        , _info(png_create_info_struct(_png)) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { png_destroy_read_struct(&_png, &_info, nullptr); }

    /// Reads what stands before the pixels, and asks for four bytes a pixel. False for a damaged file.
    bool begin(uint32_t mostPixels) {
        if (_info == nullptr || setjmp(png_jmpbuf(_png)) != 0) {
            return false;
        }
        png_set_read_fn(_png, this, give);
        png_set_user_limits(_png, mostPixels, mostPixels);
        // Texts and profiles are of no use, and some could be blown up to anything.
        png_set_keep_unknown_chunks(_png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        if (_isCrushed) {
            png_set_option(_png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
        }
        png_read_info(_png, _info);
        const auto type = png_get_color_type(_png, _info);
        _isPremultiplied = _isCrushed && (type & PNG_COLOR_MASK_ALPHA) != 0;
        if (_isCrushed && (type & ~PNG_COLOR_MASK_ALPHA) == PNG_COLOR_TYPE_RGB) {
            png_set_bgr(_png);
        }
        png_set_expand(_png);
        png_set_scale_16(_png);
        png_set_gray_to_rgb(_png);
        png_set_add_alpha(_png, UINT8_MAX, PNG_FILLER_AFTER);
        _passes = png_set_interlace_handling(_png);
        png_read_update_info(_png, _info);
        return png_get_rowbytes(_png, _info) == size().width * Image::channels;
    }

    [[nodiscard]] PixelSize size() const {
        return {png_get_image_width(_png, _info), png_get_image_height(_png, _info)};
    }
    [[nodiscard]] bool isPremultiplied() const { return _isPremultiplied; }

    /// Reads all pixels and what stands behind them; there is room for them.
    bool read(uint8_t* pixels) {
        if (setjmp(png_jmpbuf(_png)) != 0) {
            return false;
        }
        const PixelSize whole = size();
        for (int pass = 0; pass < _passes; ++pass) {
            for (size_t row = 0; row < whole.height; ++row) {
                png_read_row(_png, pixels + row * whole.width * Image::channels, nullptr);
            }
        }
        png_read_end(_png, nullptr);
        return true;
    }

  private:
    [[noreturn]] static void fail(png_structp png, png_const_charp /*text*/) { png_longjmp(png, 1); }
    static void passOver(png_structp /*png*/, png_const_charp /*text*/) {}

    static void give(png_structp png, png_bytep place, size_t count) {
        auto& bytes = static_cast<Reader*>(png_get_io_ptr(png))->_bytes;
        if (count > bytes.size()) {
            png_error(png, "the file is cut off");
        }
        std::memcpy(place, bytes.data(), count);
        bytes.remove_prefix(count);
    }

    std::string_view _bytes;
    bool _isCrushed;
    bool _isPremultiplied = false;
    int _passes = 0;
    png_structp _png;
    png_infop _info;
};

/// Multiplies the opacity into the colours; where a file says that this is done, no colour may be greater.
void premultiply(Image::Pixels& pixels, bool isDone) {
    for (size_t place = 0; place < pixels.size(); place += Image::channels) {
        const unsigned alpha = pixels[place + 3];
        for (size_t color = place; color < place + 3; ++color) {
            const unsigned value =
                isDone ? std::min<unsigned>(pixels[color], alpha) : (pixels[color] * alpha + 127) / UINT8_MAX;
            pixels[color] = static_cast<uint8_t>(value);
        }
    }
}

} // namespace

std::optional<PixelSize> sizeOfPNG(std::string_view header) {
    if (!header.starts_with(signature)) {
        return std::nullopt;
    }
    header.remove_prefix(signature.size());
    auto chunk = takeChunk(header);
    if (isChunk(chunk, crushedChunk)) {
        chunk = takeChunk(header);
    }
    if (!isChunk(chunk, headerChunk) || chunk.size() < chunkHeadBytes + 8) {
        return std::nullopt;
    }
    const PixelSize size{numberAt(chunk, chunkHeadBytes), numberAt(chunk, chunkHeadBytes + 4)};
    return size.width > 0 && size.height > 0 ? std::optional(size) : std::nullopt;
}

Result<Image> imageFromPNG(std::string_view bytes, uint32_t mostPixels) {
    const auto told = sizeOfPNG(bytes);
    if (!told) {
        return failure(EILSEQ);
    }
    if (std::max(told->width, told->height) > mostPixels) {
        return failure(EFBIG);
    }
    const bool crushed = isCrushed(bytes);
    const std::string rewritten = crushed ? uncrushed(bytes) : std::string();
    Reader reader(crushed ? rewritten : bytes, crushed);
    if (!reader.begin(mostPixels)) {
        return failure(EILSEQ);
    }
    const PixelSize size = reader.size();
    Image::Pixels pixels(size_t{size.width} * size.height * Image::channels);
    if (!reader.read(pixels.data())) {
        return failure(EILSEQ);
    }
    premultiply(pixels, reader.isPremultiplied());
    return Image(size, std::move(pixels));
}

} // namespace platform
