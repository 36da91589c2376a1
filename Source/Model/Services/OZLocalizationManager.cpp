#include "Model/Services/OZLocalizationManager.h"

#include "Categories/TextFolding.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

#include <algorithm>

#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace {

constexpr std::string_view languageFileExtension = ".strings";
constexpr std::string_view languageNameKey = "LANGNAME";
constexpr std::string_view fallbackLanguage = "English";
constexpr std::string_view languageDefaultsKey = "language";

// Names are English, as those of the language files are.
std::string displayName(std::string_view localeIdentifier) {
    icu::UnicodeString name;
    icu::Locale(std::string(localeIdentifier).c_str()).getDisplayName(icu::Locale("en_GB"), name);
    std::string bytes;
    return name.toUTF8String(bytes);
}

/// None where they are there and cannot be read; empty where they are not there.
std::optional<platform::Dictionary> readPreferences(platform::FileManager fileManager) {
    const auto bytes = fileManager.contentsAtPath(OZLocalizationManager::globalPreferencesPath);
    if (!bytes) {
        return platform::meansAbsence(bytes.error()) ? std::optional(platform::Dictionary()) : std::nullopt;
    }
    auto list = platform::parsePropertyList(*bytes);
    auto* preferences = list ? list->as<platform::Dictionary>() : nullptr;
    return preferences == nullptr ? std::nullopt : std::optional(std::move(*preferences));
}

} // namespace

OZLocalizationManager::OZLocalizationManager(platform::Device& device, platform::UserDefaults& defaults,
                                             const platform::Bundle& bundle)
    : _device(device)
    , _defaults(defaults)
    , _bundle(bundle) {
    readSystemPreferences();
    findLanguages();
}

void OZLocalizationManager::readSystemPreferences() {
    const auto read = readPreferences(_device.fileManager());
    const auto preferences = read.value_or(platform::Dictionary());
    const auto* languages = platform::valueAt<platform::Array>(preferences, "AppleLanguages");
    const auto first =
        languages == nullptr || languages->empty() ? platform::Value("en") : languages->front();
    const auto* identifier = first.as<std::string>();
    const bool isNamed = identifier != nullptr && !identifier->empty();
    _systemLanguage = isNamed ? displayName(*identifier) : fallbackLanguage;
    _isSystemLanguageKnown =
        read && isNamed && (languages != nullptr || !preferences.contains("AppleLanguages"));
    const auto* locale = platform::valueAt<std::string>(preferences, "AppleLocale");
    _systemLocale = locale == nullptr ? "en_GB" : *locale;
}

void OZLocalizationManager::findLanguages() {
    for (const auto& file : _bundle.resourceNames()) {
        if (!file.ends_with(languageFileExtension)) {
            continue;
        }
        const auto name = file.substr(0, file.size() - languageFileExtension.size());
        if (auto nameInItself = _bundle.localizedString(languageNameKey, name)) {
            _languages.emplace(name, std::move(*nameInItself));
            _languageNames.push_back(name);
        }
    }
    std::ranges::sort(_languageNames, {}, caseFoldedString);
}

std::string OZLocalizationManager::localizedStringForKey(std::string_view key) const {
    auto text = _userLanguage ? _bundle.localizedString(key, *_userLanguage) : std::nullopt;
    if (!text) {
        text = _bundle.localizedString(key, fallbackLanguage);
    }
    return text.value_or(std::string(key));
}

std::optional<std::string> OZLocalizationManager::localizedLanguageWithName(std::string_view name) const {
    const auto found = _languages.find(name);
    return found == _languages.end() ? std::nullopt : std::optional(found->second);
}

void OZLocalizationManager::setUserLanguage(std::optional<std::string_view> language) {
    if (language && language == _userLanguage) {
        return;
    }
    if (language && isLanguage(*language)) {
        _userLanguage = std::string(*language);
    } else {
        resetUserLanguage();
    }
    _device.notificationCenter().post(OZLocalizationNotification, this);
}

void OZLocalizationManager::resetUserLanguage() {
    const auto language = languageOfDevice();
    if (!isLanguage(language)) {
        throw platform::AssertionFailure("\"English.strings\" is a language file in " +
                                         _bundle.directory().string());
    }
    setUserLanguage(language);
}

// The whole locale comes first: with it, a regional variant reaches a file of its own.
std::string OZLocalizationManager::languageOfDevice() const {
    if (auto name = displayName(_systemLocale); isLanguage(name)) {
        return name;
    }
    if (isLanguage(_systemLanguage)) {
        return _systemLanguage;
    }
    if (const size_t separator = _systemLocale.find_first_of("-_"); separator != std::string::npos) {
        if (auto name = displayName(_systemLocale.substr(0, separator)); isLanguage(name)) {
            return name;
        }
    }
    return std::string(fallbackLanguage);
}

void OZLocalizationManager::loadDefaults() {
    setUserLanguage(_defaults.stringForKey(languageDefaultsKey));
}

void OZLocalizationManager::writeDefaults() {
    if (_userLanguage) {
        _defaults.setObject(languageDefaultsKey, *_userLanguage);
    }
}
