#pragma once

#include "Model/Core/CustomFileRecord.h"
#include "Model/Services/OZUserDefaultsSync.h"
#include "Platform/Formats/PropertyList.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class Device;
}
class OZLocalizationManager;

/// What the user chose to clean: which steps, which files of their own, which file types and languages, and
/// whether items only move to backup names. Kept in memory, repaired where it comes from outside, and stored
/// with the user defaults.
class CleanupChoices : public OZUserDefaultsSync {
  public:
    using LanguageNames = std::set<std::string, std::less<>>;

    /// Begins with the defaults. What is given outlives the choices.
    CleanupChoices(platform::Device& device, const OZLocalizationManager& localizationManager);

    // Settings of the steps: a dictionary from step key to number.
    /// The steps that this generation of the platform has, in the order of the run.
    static std::vector<std::string_view> cleanupStepKeys(const platform::Device& device);
    static platform::Dictionary defaultCleanupSettings(const platform::Device& device);
    [[nodiscard]] const platform::Dictionary& cleanupSettings() const { return _cleanupSettings; }
    /// The keys whose value is not 0, in the order of the run.
    [[nodiscard]] std::vector<std::string_view> enabledCleanupStepKeys() const;
    /// None for a key that is no step's.
    [[nodiscard]] std::optional<platform::Value> numberForCleanupSetting(std::string_view key) const;
    /// What settings, these or those of one run, say of a step as a number; 0 for a step that is not named.
    [[nodiscard]] static uint64_t numberOf(const platform::Dictionary& settings, std::string_view key);
    /// Whether they switch the step on.
    [[nodiscard]] static bool isOn(const platform::Dictionary& settings, std::string_view key);
    void setNumberForCleanupSetting(const platform::Value& number, std::string_view key);
    void resetCleanupSettings();
    /// Takes the numbers at known keys; everything else gets its default or falls away.
    void setCleanupSettingsResettingInvalid(const platform::Dictionary& settings);

    /// Whether a run moves items to backup names in place of removing them.
    [[nodiscard]] bool testMode() const { return _testMode; }
    void setTestMode(bool testMode) { _testMode = testMode; }

    // Files and folders of the user's own, in the user's order.
    [[nodiscard]] const std::vector<CustomFileRecord>& customFiles() const { return _customFiles; }
    /// Takes the dictionaries that are complete records; everything else falls away.
    void setCustomFilesExcludingInvalid(const platform::Array& customFiles);
    /// A record without path or file type is passed over.
    void addCustomFile(const CustomFileRecord& record);
    /// The same. Throws AssertionFailure for an index behind the end; so do the next two.
    void insertCustomFile(const CustomFileRecord& record, size_t index);
    void removeCustomFile(size_t index);
    /// Removes the record at the index, then inserts the other: an incomplete one leaves nothing there.
    void replaceCustomFile(size_t index, const CustomFileRecord& record);

    // File types: extensions without their dot.
    static std::vector<std::string> defaultFileTypes();
    [[nodiscard]] const std::vector<std::string>& fileTypes() const { return _fileTypes; }
    void resetFileTypes();
    /// Takes the types that may be cleaned; true if any was refused. Nothing but empty texts means the
    /// defaults.
    bool setFileTypesExcludingIllegal(std::vector<std::string> fileTypes);

    // Languages, by their English names.
    [[nodiscard]] const LanguageNames& languagesToRemove() const { return _languagesToRemove; }
    void setLanguagesToRemove(LanguageNames languages) { _languagesToRemove = std::move(languages); }
    void addLanguageToRemove(std::string_view language) { _languagesToRemove.emplace(language); }
    void removeLanguageToRemove(const std::string& language) { _languagesToRemove.erase(language); }
    void removeAllLanguagesToRemove() { _languagesToRemove.clear(); }
    /// Unmarks the languages whose name is a part of one of these, without regard to case and diacritics.
    void removeLanguagesInUse(std::span<const std::string> names);
    /// Unmarks English and the languages of the device and of the user; for when the language changes.
    void localize();
    /// The languages that may be chosen, in the order of the language table: not English, nor those in use.
    [[nodiscard]] std::vector<std::string> removableLanguages() const;
    /// The lines of the language table, "lang" of the program's resources: a language's English name and the
    /// other forms of it in names of files, each a regular expression. Empty where it cannot be read; kept
    /// otherwise.
    const std::vector<std::string>& languageRegexFileLines() const;
    /// Regular expressions for the languages to remove: all forms, or the two-letter codes alone.
    [[nodiscard]] std::vector<std::string> languageRegexComponentsShort(bool codesOnly) const;

    // All choices, as they outlive the process.
    void registerDefaults() override;
    void loadDefaults() override;
    void writeDefaults() override;

  private:
    /// English, the device's and the user's: never removed.
    [[nodiscard]] std::vector<std::string> languagesInUse() const;

    platform::Device& _device;
    const OZLocalizationManager& _localizationManager;
    platform::Dictionary _cleanupSettings;
    bool _testMode = false;
    std::vector<CustomFileRecord> _customFiles;
    std::vector<std::string> _fileTypes;
    LanguageNames _languagesToRemove;
    // Read at first need.
    mutable std::vector<std::string> _languageRegexFileLines;
};
