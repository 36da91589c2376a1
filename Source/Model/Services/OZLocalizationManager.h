#pragma once

#include "Model/Services/OZUserDefaultsSync.h"
#include "Platform/Device/DeviceNames.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class Bundle;
class Device;
class UserDefaults;
} // namespace platform

/// Posted with the manager as the object when the language may have changed, on the thread that changed it.
inline constexpr std::string_view OZLocalizationNotification = "OZLocalizationNotification";

/// Gives every text of the front ends. A language is a file "<English name>.strings" of the program's
/// resources with its own name at "LANGNAME"; the device only decides which one is picked where the user has
/// picked none. Texts may be read on any thread while the language stays; all else belongs to the main
/// thread.
class OZLocalizationManager : public OZUserDefaultsSync {
  public:
    /// The device's preferences, by their device path.
    static constexpr std::string_view globalPreferencesPath = devicename::globalPreferences;

    /// Reads the device's preferences and finds the languages; there is no `userLanguage` before the first
    /// `loadDefaults`. What is given outlives the manager.
    OZLocalizationManager(platform::Device& device, platform::UserDefaults& defaults,
                          const platform::Bundle& bundle);

    /// The text in the user's language, else the English one, else the key.
    [[nodiscard]] std::string localizedStringForKey(std::string_view key) const;

    /// The languages' English names, sorted without regard to case.
    [[nodiscard]] const std::vector<std::string>& languageNames() const { return _languageNames; }
    /// A language's name in itself; none for a language that has no file.
    [[nodiscard]] std::optional<std::string> localizedLanguageWithName(std::string_view name) const;

    /// The English name of the device's first language.
    [[nodiscard]] const std::string& systemLanguage() const { return _systemLanguage; }
    /// False where the device's preferences are there and do not tell: the language may be any then.
    [[nodiscard]] bool isSystemLanguageKnown() const { return _isSystemLanguageKnown; }
    /// The device's locale identifier.
    [[nodiscard]] const std::string& systemLocale() const { return _systemLocale; }
    /// One of the `languageNames`.
    [[nodiscard]] const std::optional<std::string>& userLanguage() const { return _userLanguage; }
    /// Anything but the present language takes effect and is announced; one that has no file, or none, stands
    /// for the device's.
    void setUserLanguage(std::optional<std::string_view> language);
    /// Picks the language from the device. Throws AssertionFailure where that leads to English and the
    /// resources have no English file: without it there is nothing to fall back on.
    void resetUserLanguage();

    void loadDefaults() override;
    void writeDefaults() override;

    /// The resources that the texts come from.
    [[nodiscard]] const platform::Bundle& bundle() const { return _bundle; }

  private:
    void readSystemPreferences();
    void findLanguages();
    [[nodiscard]] bool isLanguage(std::string_view name) const { return _languages.contains(name); }
    [[nodiscard]] std::string languageOfDevice() const;

    platform::Device& _device;
    platform::UserDefaults& _defaults;
    const platform::Bundle& _bundle;
    std::map<std::string, std::string, std::less<>> _languages;
    std::vector<std::string> _languageNames;
    std::string _systemLanguage;
    bool _isSystemLanguageKnown = true;
    std::string _systemLocale;
    std::optional<std::string> _userLanguage;
};
