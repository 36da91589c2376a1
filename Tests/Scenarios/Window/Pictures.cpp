#include "Tests/Scenarios/Window/Pictures.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include <zlib.h>

namespace scenarios {

namespace {

std::string bigEndian(uint32_t number) {
    return {static_cast<char>(number >> 24U), static_cast<char>(number >> 16U),
            static_cast<char>(number >> 8U), static_cast<char>(number)};
}

std::string chunk(const std::string& name, const std::string& data) {
    const std::string content = name + data;
    const auto sum =
        ::crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size()));
    return bigEndian(static_cast<uint32_t>(data.size())) + content + bigEndian(static_cast<uint32_t>(sum));
}

/// With zlib's header and checksum, or without.
std::string compressed(const std::string& bytes, bool isRaw) {
    z_stream stream = {};
    if (::deflateInit2(&stream, 9, Z_DEFLATED, isRaw ? -15 : 15, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string packed(::deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    ::deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    ::deflateEnd(&stream);
    return packed;
}

std::string lines(uint32_t width, uint32_t height, const std::string& pixel) {
    std::string line(1, '\0');
    for (uint32_t x = 0; x < width; ++x) {
        line += pixel;
    }
    std::string all;
    for (uint32_t y = 0; y < (width > 0 ? height : 0); ++y) {
        all += line;
    }
    return all;
}

/// The lines of all seven passes, in which every pixel of the picture comes once.
std::string interlacedLines(uint32_t width, uint32_t height, const std::string& pixel) {
    struct Pass {
        uint32_t x, y, stepX, stepY;
    };
    constexpr Pass passes[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                               {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
    std::string all;
    for (const auto& [x, y, stepX, stepY] : passes) {
        all += lines((width + stepX - 1 - x) / stepX, (height + stepY - 1 - y) / stepY, pixel);
    }
    return all;
}

} // namespace

std::string pngFile(const std::string& size, const std::string& color, const Words& kinds) {
    const auto is = [&](const char* kind) { return std::ranges::find(kinds, kind) != kinds.end(); };
    const auto number = [](const std::string& text) { return static_cast<uint32_t>(std::stoul(text)); };
    const uint32_t width = number(size);
    const uint32_t height = number(size.substr(size.find('x') + 1));
    std::string pixel;
    for (size_t at = 0; at < 8; at += 2) {
        pixel += static_cast<char>(std::stoul(color.substr(at, 2), nullptr, 16));
    }
    char type = 6;
    if (is("crushed")) {
        for (size_t at = 0; at < 3; ++at) {
            pixel[at] =
                static_cast<char>(static_cast<uint8_t>(pixel[at]) * static_cast<uint8_t>(pixel[3]) / 255);
        }
        std::swap(pixel[0], pixel[2]);
    }
    const std::string palette = pixel.substr(0, 3);
    if (is("opaque")) {
        pixel.resize(3);
        type = 2;
    } else if (is("grey") || is("palette")) {
        pixel = is("grey") ? pixel.substr(0, 1) : std::string(1, '\0');
        type = is("grey") ? 0 : 3;
    }
    if (is("16")) {
        std::string wide;
        for (const char value : pixel) {
            wide += {value, value};
        }
        pixel = wide;
    }
    uint32_t toldWidth = width;
    uint32_t toldHeight = height;
    for (const auto& kind : kinds) {
        if (kind.starts_with("claims=")) {
            toldWidth = number(kind.substr(7));
            toldHeight = number(kind.substr(kind.find('x') + 1));
        }
    }
    const auto rows = is("interlaced") ? interlacedLines(width, height, pixel) : lines(width, height, pixel);
    std::string file = "\x89PNG\r\n\x1A\n";
    file += is("crushed") ? chunk("CgBI", std::string("\x50\0\x20\x06", 4)) : "";
    file += chunk("IHDR", bigEndian(toldWidth) + bigEndian(toldHeight) +
                              std::string{static_cast<char>(is("16") ? 16 : 8), type, 0, 0,
                                          static_cast<char>(is("interlaced") ? 1 : 0)});
    file += is("palette") ? chunk("PLTE", palette) : "";
    const auto packed = compressed(rows, is("crushed"));
    // In two, as larger files have it.
    file +=
        chunk("IDAT", packed.substr(0, packed.size() / 2)) + chunk("IDAT", packed.substr(packed.size() / 2));
    return file + chunk("IEND", "");
}

} // namespace scenarios
