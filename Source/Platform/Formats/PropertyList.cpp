#include "Platform/Formats/PropertyList.h"

#include "Platform/Formats/PropertyListCheck.h"
#include "Platform/Formats/PropertyListTextFormat.h"
#include "Platform/Formats/TextMark.h"
#include "Platform/Formats/TextScanner.h"
#include "Platform/Formats/UTF8.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include <locale.h>
#include <plist/plist.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace platform {
namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;
using Bytes = std::unique_ptr<char, decltype(&std::free)>;

/// The library reads and writes reals with the thread's decimal point; this makes it a point while it lives.
class PlainNumbers {
  public:
    PlainNumbers()
        : _plain(::newlocale(LC_ALL_MASK, "C", nullptr))
        , _previous(::uselocale(_plain)) {}
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;
    ~PlainNumbers() {
        ::uselocale(_previous);
        ::freelocale(_plain);
    }

  private:
    locale_t _plain;
    locale_t _previous;
};

// The library has no way to make or read a date beyond 32 bits of seconds or to tell a large unsigned number
// from a negative one. A binary list of the one value has.
constexpr size_t atomOffset = 8;

Node nodeOfAtom(std::string object) {
    std::string list =
        "bplist00" + object + std::string(1, static_cast<char>(atomOffset)) + std::string(32, '\0');
    char* trailer = list.data() + list.size() - 32;
    trailer[6] = trailer[7] = trailer[15] = 1;
    trailer[31] = static_cast<char>(atomOffset + object.size());
    plist_t node = nullptr;
    plist_from_bin(list.data(), static_cast<uint32_t>(list.size()), &node);
    return {node, plist_free};
}

std::string atomOfNode(plist_t node) {
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    const Bytes owner(bytes, std::free);
    return length > atomOffset ? std::string(bytes + atomOffset, length - atomOffset) : std::string();
}

std::string bigEndian(uint64_t number) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
    }
    return bytes;
}

// Reading

Value valueOfNode(plist_t node, PropertyListFormat format);

Value integerOfNode(plist_t node) {
    uint64_t number = 0;
    plist_get_uint_val(node, &number);
    constexpr char marker128 = 0x14;
    if (std::in_range<int64_t>(number) || atomOfNode(node).front() != marker128) {
        return static_cast<int64_t>(number);
    }
    return number;
}

Value dateOfNode(plist_t node) {
    uint64_t bits = 0;
    const std::string atom = atomOfNode(node);
    for (const char byte : std::string_view(atom).substr(1, 8)) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
    }
    return Date{std::bit_cast<double>(bits)};
}

Value textOfNode(plist_t node) {
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return std::string(text, length);
}

Value dataOfNode(plist_t node) {
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return length == 0 ? Data{} : Data{std::string(bytes, length)};
}

Value arrayOfNode(plist_t node, PropertyListFormat format) {
    Array array;
    array.reserve(plist_array_get_size(node));
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Bytes owner(static_cast<char*>(position), std::free);
    plist_t item = nullptr;
    for (plist_array_next_item(node, position, &item); item != nullptr;
         plist_array_next_item(node, position, &item)) {
        array.push_back(valueOfNode(item, format));
    }
    return array;
}

Value dictionaryOfNode(plist_t node, PropertyListFormat format) {
    Dictionary dictionary;
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Bytes owner(static_cast<char*>(position), std::free);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, position, &key, &item);
        const Bytes keyOwner(key, std::free);
        if (item == nullptr) {
            break;
        }
        dictionary.insert_or_assign(key, valueOfNode(item, format));
    }
    // How XML writes an identifier of a keyed archive.
    if (const auto* number = valueAt<int64_t>(dictionary, "CF$UID");
        format == PropertyListFormat::xml && number != nullptr && *number >= 0 && dictionary.size() == 1) {
        return Uid{static_cast<uint64_t>(*number)};
    }
    return dictionary;
}

Value valueOfNode(plist_t node, PropertyListFormat format) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t truth = 0;
        plist_get_bool_val(node, &truth);
        return truth != 0;
    }
    case PLIST_UINT:
        return integerOfNode(node);
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(node, &real);
        return real;
    }
    case PLIST_STRING:
        return textOfNode(node);
    case PLIST_DATA:
        return dataOfNode(node);
    case PLIST_DATE:
        return dateOfNode(node);
    case PLIST_UID: {
        Uid identifier;
        plist_get_uid_val(node, &identifier.number);
        return identifier;
    }
    case PLIST_ARRAY:
        return arrayOfNode(node, format);
    default:
        return dictionaryOfNode(node, format);
    }
}

Node nodeOfBinary(std::string_view bytes) {
    const auto checked = checkBinaryPropertyList(bytes);
    if (!checked) {
        return {nullptr, plist_free};
    }
    std::string repaired;
    if (!checked->loneSurrogates.empty()) {
        repaired = bytes;
        for (const size_t offset : checked->loneSurrogates) {
            repaired.replace(offset, 2, "\xFF\xFD"); // the replacement character
        }
        bytes = repaired;
    }
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &node);
    return {node, plist_free};
}

std::optional<Value> valueOfBinary(std::string_view bytes) {
    const Node node = nodeOfBinary(bytes);
    return node ? std::optional(valueOfNode(node.get(), PropertyListFormat::binary)) : std::nullopt;
}

std::optional<Value> valueOfXml(std::string_view bytes, size_t heldMemory = 0) {
    const auto checked = checkXmlPropertyList(bytes, heldMemory);
    plist_t node = nullptr;
    if (checked) {
        plist_from_xml(checked->data(), static_cast<uint32_t>(checked->size()), &node);
    }
    const Node owner(node, plist_free);
    return node != nullptr ? std::optional(valueOfNode(node, PropertyListFormat::xml)) : std::nullopt;
}

bool isMarkup(const icu::UnicodeString& text) {
    int32_t first = 0;
    while (first < text.length() && u_isUWhiteSpace(text.charAt(first))) {
        ++first;
    }
    return text.charAt(first) == '<';
}

// XML in UTF-16 or UTF-32, or the text format. Damaged markup never becomes a list of the text format.
std::optional<Value> valueOfText(std::string_view bytes) {
    auto text = bytes.size() <= maximumTextListSize
                    ? decodeText(bytes)
                    : std::unexpected(TextError{.line = 0, .reason = "the file is too large"});
    if (!text) {
        return std::nullopt;
    }
    if (!isMarkup(*text)) {
        return parseTextPropertyList(*std::move(text));
    }
    // The encoding that the markup itself names is that of the file; the library looks at the bytes alone.
    const std::string markup = toUTF8(*text);
    text->remove();
    return valueOfXml(markup, bytes.size());
}

std::optional<Value> valueOfList(std::string_view bytes) {
    if (bytes.starts_with("bplist0")) {
        return valueOfBinary(bytes);
    }
    auto value = valueOfXml(withoutUTF8Mark(bytes));
    return value ? std::move(value) : valueOfText(bytes);
}

// Writing

std::string writableText(const std::string& text) {
    OZ_REQUIRE(text.find('\0') == text.npos);
    std::string valid = text;
    if (!isUTF8(text)) {
        valid.clear();
        icu::UnicodeString::fromUTF8(text).toUTF8String(valid);
    }
    return valid;
}

plist_t nodeOfValue(const Value& value, PropertyListFormat format);

// The text of a date has four digits for the year; the library leaves it out where that does not do.
double dateThatXmlHolds(double seconds) {
    constexpr double startOfYear1 = -63113904000.0;
    constexpr double endOfYear9999 = 252423993599.0;
    return std::isnan(seconds) ? 0 : std::clamp(seconds, startOfYear1, endOfYear9999);
}

struct NodeMaker {
    PropertyListFormat format;

    plist_t operator()(bool truth) const { return plist_new_bool(truth ? 1 : 0); }
    plist_t operator()(int64_t number) const { return plist_new_uint(static_cast<uint64_t>(number)); }
    plist_t operator()(uint64_t number) const {
        return std::in_range<int64_t>(number)
                   ? plist_new_uint(number)
                   : nodeOfAtom("\x14" + std::string(8, '\0') + bigEndian(number)).release();
    }
    plist_t operator()(double real) const { return plist_new_real(real); }
    plist_t operator()(const std::string& text) const { return plist_new_string(writableText(text).c_str()); }
    plist_t operator()(const Data& data) const {
        return plist_new_data(data.bytes.data(), data.bytes.size());
    }
    plist_t operator()(Date date) const {
        const bool isText = format == PropertyListFormat::xml;
        const double seconds = isText ? dateThatXmlHolds(date.seconds) : date.seconds;
        return nodeOfAtom("\x33" + bigEndian(std::bit_cast<uint64_t>(seconds))).release();
    }
    plist_t operator()(Uid identifier) const { return plist_new_uid(identifier.number); }
    plist_t operator()(const Array& array) const {
        Node node(plist_new_array(), plist_free);
        for (const Value& item : array) {
            plist_array_append_item(node.get(), nodeOfValue(item, format));
        }
        return node.release();
    }
    plist_t operator()(const Dictionary& dictionary) const {
        Node node(plist_new_dict(), plist_free);
        for (const auto& [key, item] : dictionary) {
            plist_dict_set_item(node.get(), writableText(key).c_str(), nodeOfValue(item, format));
        }
        return node.release();
    }
};

plist_t nodeOfValue(const Value& value, PropertyListFormat format) {
    return std::visit(NodeMaker{format}, value.storage());
}

} // namespace

Result<Value> parsePropertyList(std::string_view bytes) {
    const PlainNumbers plain;
    auto value = valueOfList(bytes);
    return value ? Result<Value>(*std::move(value)) : failure(EILSEQ);
}

std::string serializePropertyList(const Value& value, PropertyListFormat format) {
    const PlainNumbers plain;
    const Node node(nodeOfValue(value, format), plist_free);
    char* bytes = nullptr;
    uint32_t length = 0;
    (format == PropertyListFormat::xml ? plist_to_xml : plist_to_bin)(node.get(), &bytes, &length);
    const Bytes owner(bytes, std::free);
    OZ_REQUIRE(bytes != nullptr);
    return {bytes, length};
}

} // namespace platform
