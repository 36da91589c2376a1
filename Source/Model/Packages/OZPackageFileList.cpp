#include "Model/Packages/OZPackageFileList.h"

#include "Categories/Text.h"
#include "Model/Packages/TextLines.h"
#include "Platform/Formats/TextMark.h"
#include "Platform/Formats/UTF8.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include <unicode/ucnv.h>
#include <unicode/uniset.h>

namespace {

using platform::encodingMarkedIn;
using platform::MarkedEncoding;
using platform::Result;

// The encodings that a mark tells.
constexpr std::pair<OZTextEncoding, const MarkedEncoding*> markedEncodings[] = {
    {OZTextEncoding::utf32LittleEndian, &platform::utf32LittleEndian},
    {OZTextEncoding::utf32BigEndian, &platform::utf32BigEndian},
    {OZTextEncoding::utf8WithMark, &platform::utf8Marked},
    {OZTextEncoding::utf16LittleEndian, &platform::utf16LittleEndian},
    {OZTextEncoding::utf16BigEndian, &platform::utf16BigEndian},
};

// Null for the others.
const MarkedEncoding* markOf(OZTextEncoding encoding) {
    const auto* const found = std::ranges::find(markedEncodings, encoding,
                                                &std::pair<OZTextEncoding, const MarkedEncoding*>::first);
    return found == std::end(markedEncodings) ? nullptr : found->second;
}

OZTextEncoding encodingOf(const MarkedEncoding* mark) {
    return std::ranges::find(markedEncodings, mark, &std::pair<OZTextEncoding, const MarkedEncoding*>::second)
        ->first;
}

/// Whether the text has to be converted for this mark, rather than being UTF-8 as it is.
bool isWide(const MarkedEncoding* mark) {
    return mark != nullptr && mark != &platform::utf8Marked;
}

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

/// Stops at what it cannot convert, so that nothing is replaced in silence.
Converter strictConverter(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &error), &ucnv_close);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    return converter;
}

Result<std::string> converted(std::string_view bytes, const char* from, const char* to) {
    const Converter source = strictConverter(from);
    const Converter target = strictConverter(to);
    // No character takes more than four bytes for each of its own.
    std::string text(bytes.size() * 4, '\0');
    char* end = text.data();
    const char* next = bytes.data();
    UErrorCode error = U_ZERO_ERROR;
    ucnv_convertEx(target.get(), source.get(), &end, text.data() + text.size(), &next,
                   bytes.data() + bytes.size(), nullptr, nullptr, nullptr, nullptr, true, true, &error);
    if (U_FAILURE(error)) {
        return platform::failure(EILSEQ);
    }
    text.resize(static_cast<size_t>(end - text.data()));
    return text;
}

/// In single bytes, only those are known that all encodings have in common.
const icu::UnicodeSet& newlinesIn(OZTextEncoding encoding) {
    static const icu::UnicodeSet common(0x0A, 0x0D);
    return encoding == OZTextEncoding::singleBytes ? common : newlineCharacterSet();
}

std::vector<std::string> splitAtNewlines(std::string_view text, const icu::UnicodeSet& newlines) {
    std::vector<std::string> lines;
    for (bool ended = false; !ended;) {
        const size_t rest = text.size();
        const std::string_view line = takeLine(text, newlines);
        lines.emplace_back(line);
        ended = line.size() == rest;
    }
    return lines;
}

} // namespace

Result<OZPackageFileList> OZPackageFileList::parse(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<int32_t>::max() / 4) {
        return platform::failure(EFBIG);
    }
    const MarkedEncoding* const marked = encodingMarkedIn(bytes);
    Result<std::string> text = std::string(bytes.substr(marked == nullptr ? 0 : marked->mark.size()));
    if (isWide(marked)) {
        text = converted(*text, marked->name, "UTF-8");
    }
    if (!text || (marked != nullptr && !platform::isUTF8(*text))) {
        return platform::failure(EILSEQ);
    }
    OZPackageFileList list;
    if (marked != nullptr) {
        list.encoding = encodingOf(marked);
    } else if (!platform::isUTF8(*text)) {
        list.encoding = OZTextEncoding::singleBytes;
    }
    list.paths = splitAtNewlines(*text, newlinesIn(list.encoding));
    if (!isNotEmptyOrWhitespace(list.paths.back())) {
        list.paths.pop_back();
    }
    return list;
}

Result<std::string> OZPackageFileList::serialize() const {
    std::string text;
    for (const std::string& path : paths) {
        const std::string_view trimmed = stringByTrimmingCharactersInSet(path, newlinesIn(encoding));
        if (!trimmed.empty()) {
            text += trimmed;
            text += '\n';
        }
    }
    if (text.empty()) {
        return text;
    }
    const MarkedEncoding* const marked = markOf(encoding);
    auto encoded =
        isWide(marked) ? converted(text, "UTF-8", marked->name) : Result<std::string>(std::move(text));
    if (encoded && marked != nullptr) {
        encoded->insert(0, marked->mark);
    }
    // Blank lines that stood before the first path are gone, and with what it begins with it could read as
    // another encoding's mark.
    if (encoded && encodingMarkedIn(*encoded) != marked) {
        return platform::failure(EILSEQ);
    }
    return encoded;
}
