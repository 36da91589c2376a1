#include "Platform/Formats/PropertyListCheck.h"

#include <algorithm>

namespace platform {
namespace {

constexpr size_t headerSize = 8;
constexpr size_t trailerSize = 32;
constexpr size_t maximumObjects = maximumPropertyListMemory / propertyListNodeMemory;
// A few broken characters are an accident; more of them are no text.
constexpr size_t maximumLoneSurrogates = 1024;

uint64_t bigEndian(std::string_view bytes) {
    uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

/// Walks the object graph of one list, every object once. All work is paid from one budget, so that no input
/// takes more time than its memory estimate allows.
class BinaryCheck {
  public:
    explicit BinaryCheck(std::string_view bytes)
        : _bytes(bytes) {}

    std::optional<CheckedBinaryPropertyList> run() {
        if (!readTrailer() || !measure(_root, 1) ||
            _objects[_root].memory > maximumPropertyListMemory - _bytes.size()) {
            return std::nullopt;
        }
        return std::move(_result);
    }

  private:
    enum class State : uint8_t { unseen, open, done };
    struct Object {
        uint32_t memory = 0; // of the whole expansion below it
        uint16_t height = 0;
        State state = State::unseen;
    };
    struct Header {
        unsigned kind;
        uint64_t count;
        size_t body;
    };

    bool readTrailer() {
        if (_bytes.size() <= headerSize + trailerSize) {
            return false;
        }
        const std::string_view trailer = _bytes.substr(_bytes.size() - trailerSize);
        _offsetSize = static_cast<unsigned char>(trailer[6]);
        _referenceSize = static_cast<unsigned char>(trailer[7]);
        const uint64_t count = bigEndian(trailer.substr(8, 8));
        const uint64_t root = bigEndian(trailer.substr(16, 8));
        const uint64_t table = bigEndian(trailer.substr(24, 8));
        const size_t end = _bytes.size() - trailerSize;
        if (_offsetSize < 1 || _offsetSize > 8 || _referenceSize < 1 || _referenceSize > 8 || root >= count ||
            count > maximumObjects || table <= headerSize || table > end ||
            count * _offsetSize > end - table) {
            return false;
        }
        _table = static_cast<size_t>(table);
        _root = static_cast<size_t>(root);
        _objects.resize(static_cast<size_t>(count));
        return true;
    }

    /// Whether `size` bytes at `offset` lie between the header and the offset table.
    bool contains(size_t offset, uint64_t size) const { return offset <= _table && size <= _table - offset; }

    bool measure(size_t index, size_t depth) {
        if (_objects[index].state == State::open ||
            depth + _objects[index].height > maximumPropertyListDepth) {
            return false;
        }
        if (_objects[index].state == State::done) {
            return true;
        }
        _objects[index].state = State::open;
        const auto header = readHeader(index);
        if (!header || !spend(propertyListNodeMemory)) {
            return false;
        }
        _objects[index].memory = propertyListNodeMemory;
        const bool container = header->kind == 0xA || header->kind == 0xD;
        if (container ? !measureContainer(index, *header, depth) : !measureScalar(index, *header)) {
            return false;
        }
        _objects[index].state = State::done;
        return true;
    }

    /// The object's kind, its count of elements or bytes, and where these begin.
    std::optional<Header> readHeader(size_t index) const {
        const uint64_t offset = bigEndian(_bytes.substr(_table + index * _offsetSize, _offsetSize));
        if (offset < headerSize || offset >= _table) {
            return std::nullopt;
        }
        const unsigned marker = static_cast<unsigned char>(_bytes[static_cast<size_t>(offset)]);
        Header header{marker >> 4U, marker & 0xFU, static_cast<size_t>(offset) + 1};
        const bool counted = header.kind >= 0x4 && header.kind != 0x8;
        if (!counted || header.count != 0xF) {
            return header;
        }
        if (!contains(header.body, 1)) {
            return std::nullopt;
        }
        const auto number = static_cast<unsigned char>(_bytes[header.body]);
        const size_t size = size_t{1} << (number & 0xFU);
        if (number >> 4U != 0x1 || size > 8 || !contains(header.body + 1, size)) {
            return std::nullopt;
        }
        header.count = bigEndian(_bytes.substr(header.body + 1, size));
        header.body += 1 + size;
        return header;
    }

    bool measureContainer(size_t index, const Header& header, size_t depth) {
        const bool dictionary = header.kind == 0xD;
        const uint64_t references = dictionary ? header.count * 2 : header.count;
        if (header.count > maximumObjects || !contains(header.body, references * _referenceSize)) {
            return false;
        }
        for (size_t i = 0; i < references; ++i) {
            const uint64_t child = bigEndian(_bytes.substr(header.body + i * _referenceSize, _referenceSize));
            const bool key = dictionary && i < header.count;
            if (child >= _objects.size() || !spend(1) || (key && !isText(static_cast<size_t>(child))) ||
                !measure(static_cast<size_t>(child), depth + 1) || !add(index, static_cast<size_t>(child))) {
                return false;
            }
        }
        return true;
    }

    bool isText(size_t index) const {
        const auto header = readHeader(index);
        return header && (header->kind == 0x5 || header->kind == 0x6);
    }

    bool add(size_t index, size_t child) {
        Object& object = _objects[index];
        object.memory += _objects[child].memory;
        object.height = std::max<uint16_t>(object.height, static_cast<uint16_t>(_objects[child].height + 1));
        return object.memory <= maximumPropertyListMemory;
    }

    bool measureScalar(size_t index, const Header& header) {
        switch (header.kind) {
        case 0x0: // booleans
            return header.count == 0x8 || header.count == 0x9;
        case 0x1: // integers; of 128 bits the upper half must be empty, since no value of ours holds it
            return header.count <= 4 && contains(header.body, uint64_t{1} << header.count) &&
                   (header.count < 4 || bigEndian(_bytes.substr(header.body, 8)) == 0);
        case 0x2: // reals
            return (header.count == 2 || header.count == 3) &&
                   contains(header.body, uint64_t{1} << header.count);
        case 0x3: // dates
            return header.count == 3 && contains(header.body, 8);
        case 0x4: // data
            return contains(header.body, header.count) && charge(index, 2 * header.count);
        case 0x5: // ASCII
            return contains(header.body, header.count) && charge(index, 2 * header.count) &&
                   checkAscii(_bytes.substr(header.body, header.count));
        case 0x6: // UTF-16; three bytes of UTF-8 a unit, held twice
            return header.count <= _bytes.size() && contains(header.body, 2 * header.count) &&
                   charge(index, 6 * header.count) && checkUtf16(header.body, header.count);
        case 0x8: // unique identifiers
            return header.count < 8 && contains(header.body, header.count + 1);
        default:
            return false;
        }
    }

    bool charge(size_t index, uint64_t memory) {
        if (!spend(memory)) {
            return false;
        }
        _objects[index].memory += static_cast<uint32_t>(memory);
        return true;
    }

    bool spend(uint64_t memory) {
        _spent += memory;
        return _spent <= maximumPropertyListMemory;
    }

    // A zero byte would end the text for the library, and what follows it would be lost.
    static bool checkAscii(std::string_view text) {
        return std::ranges::all_of(text, [](char c) { return c > 0; });
    }

    bool checkUtf16(size_t offset, uint64_t units) {
        const auto unitAt = [&](size_t i) { return bigEndian(_bytes.substr(offset + 2 * i, 2)); };
        for (size_t i = 0; i < units; ++i) {
            const uint64_t unit = unitAt(i);
            if (unit == 0) {
                return false;
            }
            if ((unit & 0xF800U) != 0xD800) {
                continue;
            }
            if (unit < 0xDC00 && i + 1 < units && (unitAt(i + 1) & 0xFC00U) == 0xDC00) {
                ++i;
            } else if (_result.loneSurrogates.size() == maximumLoneSurrogates) {
                return false;
            } else {
                _result.loneSurrogates.push_back(offset + 2 * i);
            }
        }
        return true;
    }

    std::string_view _bytes;
    size_t _offsetSize = 0;
    size_t _referenceSize = 0;
    size_t _table = 0;
    size_t _root = 0;
    uint64_t _spent = 0;
    std::vector<Object> _objects;
    CheckedBinaryPropertyList _result;
};

} // namespace

std::optional<CheckedBinaryPropertyList> checkBinaryPropertyList(std::string_view bytes) {
    if (bytes.size() > maximumPropertyListSize) {
        return std::nullopt;
    }
    return BinaryCheck(bytes).run();
}

} // namespace platform
