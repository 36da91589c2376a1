#include "Categories/TextFolding.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace {

icu::UnicodeString unicodeString(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

icu::UnicodeString normalized(const icu::UnicodeString& text,
                              const icu::Normalizer2* (*form)(UErrorCode& error)) {
    UErrorCode error = U_ZERO_ERROR;
    const auto* normalizer = form(error);
    const auto result = U_SUCCESS(error) ? normalizer->normalize(text, error) : text;
    return U_SUCCESS(error) ? result : text;
}

icu::UnicodeString withoutCaseAndDiacritics(std::string_view text) {
    const auto decomposed = normalized(unicodeString(text), &icu::Normalizer2::getNFDInstance);
    icu::UnicodeString bare;
    for (int32_t index = 0; index < decomposed.length(); index = decomposed.moveIndex32(index, 1)) {
        if (u_charType(decomposed.char32At(index)) != U_NON_SPACING_MARK) {
            bare.append(decomposed.char32At(index));
        }
    }
    return bare.foldCase();
}

} // namespace

std::string caseFoldedString(std::string_view text) {
    std::string folded;
    // One name may be written composed and decomposed.
    normalized(unicodeString(text).foldCase(), &icu::Normalizer2::getNFCInstance).toUTF8String(folded);
    return folded;
}

bool containsIgnoringCaseAndDiacritics(std::string_view text, std::string_view part) {
    const auto barePart = withoutCaseAndDiacritics(part);
    return !barePart.isEmpty() && withoutCaseAndDiacritics(text).indexOf(barePart) >= 0;
}
