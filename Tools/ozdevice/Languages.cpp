#include "DeviceBuild.h"

#include <fmt/format.h>

namespace ozdevice {
namespace {

// Folders of languages in their forms: names, codes, codes with a region.
constexpr std::string_view languageFolders[] = {"Base",  "Dutch", "English", "French", "German", "de",
                                                "de-AT", "en",    "en_GB",   "es",     "fr",     "fr_CA",
                                                "it",    "ja",    "nl",      "pt-BR",  "ru",     "zh-Hans"};

constexpr std::string_view localizedBundles[] = {
    "/System/Library/CoreServices/SpringBoard.app",
    "/System/Library/Frameworks/UIKit.framework",
    "/System/Library/PrivateFrameworks/Preferences.framework",
    // Kept whatever the user chooses: the network needs them.
    "/System/Library/Carrier Bundles/iPhone/Unknown.bundle",
};

constexpr std::string_view codes[] = {"de", "en", "es", "fr", "it", "nl", "ja"};

struct CodedEntry {
    /// "{id}" stands for the language's code, in upper case where the platform has it so.
    TreeEntry entry;
    bool upperCase = false;
};

constexpr CodedEntry codedEntries[] = {
    {{"/usr/share/mecabra/{id}/dictionary.dat"}},
    {{"/usr/share/tokenizer/{id}/tokens.dat"}},
    {{"/System/Library/TextInput/TextInput_{id}.bundle/Info.plist"}},
    {{"/System/Library/LinguisticData/{id}/words.dat"}},
    {{"/System/Library/LinguisticData/RequiredAssets_{id}.bundle/Info.plist"}},
    {{"/System/Library/PrivateFrameworks/VoiceServices.framework/TTSResources/{id}-XX/voice.dat"}},
    {{"/System/Library/PrivateFrameworks/VoiceServices.framework/RecognitionResources/Express/"
      "{id}-XX.model.bin"}},
    {{"/System/Library/PrivateFrameworks/VoiceServices.framework/RecognitionResources/Express/{id}.note"}},
    {{"/System/Library/PrivateFrameworks/SportsWorkout.framework/voices/Female/{id}XX/minutes.caf"}, true},
    {{"/System/Library/PrivateFrameworks/SportsWorkout.framework/voices/Male/{id}XX/minutes.caf"}, true},
};

constexpr TreeEntry sharedEntries[] = {
    {"/System/Library/TextInput/TextInput_emoji.bundle/Info.plist"},
    {"/System/Library/TextInput/TextInputCore.bundle/Info.plist"},
    {"/System/Library/LinguisticData/common.dat"},
    {"/System/Library/PrivateFrameworks/VoiceServices.framework/TTSResources/shared.dat"},
};

std::string upperCase(std::string_view code) {
    std::string text(code);
    for (char& character : text) {
        character = static_cast<char>(character - 'a' + 'A');
    }
    return text;
}

} // namespace

void addLanguages(DeviceBuild& build) {
    build.add(sharedEntries);
    for (const std::string_view bundle : localizedBundles) {
        for (const std::string_view language : languageFolders) {
            constexpr TreeEntry table[] = {{"/{id}.lproj/Localizable.strings"}};
            build.add(table, bundle, language);
        }
    }
    for (const std::string_view code : codes) {
        for (const auto& [entry, isUpperCase] : codedEntries) {
            build.add(std::span(&entry, 1), {}, isUpperCase ? upperCase(code) : std::string(code));
        }
    }
}

} // namespace ozdevice
