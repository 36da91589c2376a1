// What the user chose to clean, and how it outlives the process.
#include "Categories/NSStringAdditions.h"
#include "Categories/NSStringFolding.h"
#include "Model/Core/CustomFileRecordStorage.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device.h"

#include <algorithm>

#include <unicode/uniset.h>

namespace {

namespace key {
constexpr std::string_view cleanupSettings = "cleanupSettings";
constexpr std::string_view customFiles = "customFiles";
constexpr std::string_view fileTypes = "fileTypes";
constexpr std::string_view languagesToRemove = "languagesToRemove";
constexpr std::string_view testMode = "testMode";
} // namespace key

constexpr std::string_view standardFileTypes[] = {"log", "logs", "tmp", "temp"};

// Files without which a device or its applications do not work.
constexpr std::string_view illegalFileTypes[] = {
    "bin",  "cpio", "dat",   "data", "db", "dmg",     "dylib", "h",   "jpeg", "jpg",
    "maps", "nib",  "plist", "png",  "so", "strings", "ttc",   "ttf", "xml",
};

/// Whatever is no letter, digit or one of "_-%": a file type becomes a part of a regular expression.
const icu::UnicodeSet& charactersOutsideFileTypes() {
    static const icu::UnicodeSet set = [] {
        UErrorCode error = U_ZERO_ERROR;
        icu::UnicodeSet outside(icu::UnicodeString::fromUTF8(R"([^[:L:][:M:][:N:]_\-%])"), error);
        outside.freeze();
        return outside;
    }();
    return set;
}

bool isIllegalFileType(std::string_view type) {
    return containsCharactersFromSet(type, charactersOutsideFileTypes()) ||
           std::ranges::find(illegalFileTypes, type) != std::end(illegalFileTypes);
}

template <class Texts>
platform::Array arrayOfTexts(const Texts& texts) {
    platform::Array array;
    for (const auto& text : texts) {
        array.emplace_back(text);
    }
    return array;
}

std::vector<std::string> textsOfArray(const std::optional<platform::Array>& array) {
    std::vector<std::string> texts;
    for (const auto& element : array.value_or(platform::Array{})) {
        if (const auto* text = element.as<std::string>()) {
            texts.push_back(*text);
        }
    }
    return texts;
}

void storeUnlessEmpty(platform::UserDefaults& defaults, std::string_view key, platform::Array array) {
    if (array.empty()) {
        defaults.removeObjectForKey(key);
    } else {
        defaults.setObject(key, std::move(array));
    }
}

} // namespace

void OZCore::setCustomFilesExcludingInvalid(const platform::Array& customFiles) {
    _customFiles.clear();
    for (const auto& value : customFiles) {
        if (const auto record = customFileRecordFromValue(value)) {
            addCustomFile(*record);
        }
    }
}

void OZCore::addCustomFile(const CustomFileRecord& record) {
    insertCustomFile(record, _customFiles.size());
}

void OZCore::insertCustomFile(const CustomFileRecord& record, size_t index) {
    OZ_REQUIRE(index <= _customFiles.size());
    if (isCompleteRecord(record)) {
        _customFiles.insert(_customFiles.begin() + static_cast<ptrdiff_t>(index), record);
    }
}

void OZCore::removeCustomFile(size_t index) {
    OZ_REQUIRE(index < _customFiles.size());
    _customFiles.erase(_customFiles.begin() + static_cast<ptrdiff_t>(index));
}

void OZCore::replaceCustomFile(size_t index, const CustomFileRecord& record) {
    const auto copy = record;
    removeCustomFile(index);
    insertCustomFile(copy, index);
}

std::vector<std::string> OZCore::defaultFileTypes() {
    return {std::begin(standardFileTypes), std::end(standardFileTypes)};
}

void OZCore::resetFileTypes() {
    _fileTypes = defaultFileTypes();
}

bool OZCore::setFileTypesExcludingIllegal(std::vector<std::string> fileTypes) {
    std::erase(fileTypes, "");
    if (fileTypes.empty()) {
        resetFileTypes();
        return false;
    }
    const auto refused = std::erase_if(fileTypes, isIllegalFileType);
    _fileTypes = std::move(fileTypes);
    return refused != 0;
}

void OZCore::removeLanguagesInUse(std::span<const std::string> names) {
    std::erase_if(_languagesToRemove, [&](const std::string& language) {
        return std::ranges::any_of(names, [&](const std::string& name) {
            return containsIgnoringCaseAndDiacritics(name, language);
        });
    });
}

void OZCore::localize() {
    std::vector<std::string> names{"English"};
    if (_localizationManager != nullptr) {
        names.push_back(_localizationManager->systemLanguage());
        names.push_back(_localizationManager->userLanguage().value_or(""));
    }
    removeLanguagesInUse(names);
}

void OZCore::registerDefaults() {
    _device.standardUserDefaults().registerDefaults(
        {{std::string(key::cleanupSettings), defaultCleanupSettings(_device)},
         {std::string(key::fileTypes), arrayOfTexts(defaultFileTypes())}});
}

void OZCore::loadDefaults() {
    const auto& defaults = _device.standardUserDefaults();
    setCleanupSettingsResettingInvalid(
        defaults.dictionaryForKey(key::cleanupSettings).value_or(platform::Dictionary{}));
    if (enabledCleanupStepKeys().empty()) {
        resetCleanupSettings();
    }
    setCustomFilesExcludingInvalid(defaults.arrayForKey(key::customFiles).value_or(platform::Array{}));
    std::ignore = setFileTypesExcludingIllegal(textsOfArray(defaults.arrayForKey(key::fileTypes)));
    if (const auto languages = defaults.arrayForKey(key::languagesToRemove)) {
        const auto names = textsOfArray(languages);
        setLanguagesToRemove({names.begin(), names.end()});
        // The device may have got another language since they were marked.
        localize();
    }
    setTestMode(defaults.boolForKey(key::testMode));
}

void OZCore::writeDefaults() {
    auto& defaults = _device.standardUserDefaults();
    defaults.setObject(key::cleanupSettings, _cleanupSettings);
    defaults.setObject(key::fileTypes, arrayOfTexts(_fileTypes));
    platform::Array records;
    std::ranges::transform(_customFiles, std::back_inserter(records), valueFromCustomFileRecord);
    storeUnlessEmpty(defaults, key::customFiles, std::move(records));
    storeUnlessEmpty(defaults, key::languagesToRemove, arrayOfTexts(_languagesToRemove));
    defaults.setBool(key::testMode, _testMode);
}
