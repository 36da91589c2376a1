#include "Model/Core/CleanupChoices.h"

#include "Categories/Text.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/CustomFileRecordStorage.h"
#include "Platform/Device/Device.h"

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

CleanupChoices::CleanupChoices(platform::Device& device, const OZLocalizationManager& localizationManager)
    : _device(device)
    , _localizationManager(localizationManager)
    , _cleanupSettings(defaultCleanupSettings(device))
    , _fileTypes(defaultFileTypes()) {}

std::vector<std::string_view> CleanupChoices::cleanupStepKeys(const platform::Device& device) {
    std::vector<std::string_view> keys;
    for (const auto& step : cleanupSteps) {
        if (device.facts().foundationVersion >= step.sinceFoundationVersion) {
            keys.push_back(step.key);
        }
    }
    return keys;
}

std::vector<std::string_view> CleanupChoices::enabledCleanupStepKeys() const {
    auto keys = cleanupStepKeys(_device);
    std::erase_if(keys, [&](std::string_view key) { return numberOf(_cleanupSettings, key) == 0; });
    return keys;
}

std::optional<platform::Value> CleanupChoices::numberForCleanupSetting(std::string_view key) const {
    const auto found = _cleanupSettings.find(key);
    return found == _cleanupSettings.end() ? std::nullopt : std::optional(found->second);
}

uint64_t CleanupChoices::numberOf(const platform::Dictionary& settings, std::string_view key) {
    const auto found = settings.find(key);
    return found == settings.end() ? 0 : found->second.unsignedValue().value_or(0);
}

bool CleanupChoices::isOn(const platform::Dictionary& settings, std::string_view key) {
    const auto found = settings.find(key);
    if (found == settings.end()) {
        return false;
    }
    return key == cleanupstep::attachments ? numberOf(settings, key) != 0
                                           : found->second.boolValue().value_or(false);
}

void CleanupChoices::setNumberForCleanupSetting(const platform::Value& number, std::string_view key) {
    _cleanupSettings.insert_or_assign(std::string(key), number);
}

void CleanupChoices::resetCleanupSettings() {
    _cleanupSettings = defaultCleanupSettings(_device);
}

void CleanupChoices::setCleanupSettingsResettingInvalid(const platform::Dictionary& settings) {
    auto repaired = defaultCleanupSettings(_device);
    for (auto& [key, number] : repaired) {
        const auto given = settings.find(key);
        if (given != settings.end() && given->second.isNumber()) {
            number = given->second;
        }
    }
    _cleanupSettings = std::move(repaired);
}

void CleanupChoices::setCustomFilesExcludingInvalid(const platform::Array& customFiles) {
    _customFiles.clear();
    for (const auto& value : customFiles) {
        if (const auto record = customFileRecordFromValue(value)) {
            addCustomFile(*record);
        }
    }
}

void CleanupChoices::addCustomFile(const CustomFileRecord& record) {
    insertCustomFile(record, _customFiles.size());
}

void CleanupChoices::insertCustomFile(const CustomFileRecord& record, size_t index) {
    OZ_REQUIRE(index <= _customFiles.size());
    if (isCompleteRecord(record)) {
        _customFiles.insert(_customFiles.begin() + static_cast<ptrdiff_t>(index), record);
    }
}

void CleanupChoices::removeCustomFile(size_t index) {
    OZ_REQUIRE(index < _customFiles.size());
    _customFiles.erase(_customFiles.begin() + static_cast<ptrdiff_t>(index));
}

void CleanupChoices::replaceCustomFile(size_t index, const CustomFileRecord& record) {
    const auto copy = record;
    removeCustomFile(index);
    insertCustomFile(copy, index);
}

void CleanupChoices::resetFileTypes() {
    _fileTypes = defaultFileTypes();
}

bool CleanupChoices::setFileTypesExcludingIllegal(std::vector<std::string> fileTypes) {
    std::erase(fileTypes, "");
    if (fileTypes.empty()) {
        resetFileTypes();
        return false;
    }
    const auto refused = std::erase_if(fileTypes, isIllegalFileType);
    _fileTypes = std::move(fileTypes);
    return refused != 0;
}

void CleanupChoices::registerDefaults() {
    _device.standardUserDefaults().registerDefaults(
        {{std::string(key::cleanupSettings), defaultCleanupSettings(_device)},
         {std::string(key::fileTypes), arrayOfTexts(defaultFileTypes())}});
}

void CleanupChoices::loadDefaults() {
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

void CleanupChoices::writeDefaults() {
    auto& defaults = _device.standardUserDefaults();
    defaults.setObject(key::cleanupSettings, _cleanupSettings);
    defaults.setObject(key::fileTypes, arrayOfTexts(_fileTypes));
    platform::Array records;
    std::ranges::transform(_customFiles, std::back_inserter(records), valueFromCustomFileRecord);
    storeUnlessEmpty(defaults, key::customFiles, std::move(records));
    storeUnlessEmpty(defaults, key::languagesToRemove, arrayOfTexts(_languagesToRemove));
    defaults.setBool(key::testMode, _testMode);
}
