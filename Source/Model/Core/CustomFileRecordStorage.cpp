#include "Model/Core/CustomFileRecordStorage.h"

namespace {

constexpr std::string_view filePathKey = "filePath";
constexpr std::string_view fileTypeKey = "fileType";
constexpr std::string_view customFolderSettingKey = "customFolderSetting";
constexpr std::string_view recursiveKey = "recursive";

struct PatternField {
    std::string_view key;
    std::optional<std::string> CustomFileRecord::* pattern;
};

constexpr PatternField patternFields[] = {
    {"startPattern", &CustomFileRecord::startPattern},
    {"middlePattern", &CustomFileRecord::middlePattern},
    {"endPattern", &CustomFileRecord::endPattern},
};

std::optional<std::string> textAt(const platform::Dictionary& dictionary, std::string_view key) {
    const auto* text = platform::valueAt<std::string>(dictionary, key);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

} // namespace

platform::Value valueFromCustomFileRecord(const CustomFileRecord& record) {
    platform::Dictionary dictionary;
    dictionary.emplace(filePathKey, record.filePath);
    dictionary.emplace(fileTypeKey, record.fileType);
    if (record.customFolderSetting != OZCustomFolderSetting::whole) {
        dictionary.emplace(customFolderSettingKey, static_cast<uint64_t>(record.customFolderSetting));
    }
    if (record.recursive) {
        dictionary.emplace(recursiveKey, true);
    }
    for (const auto& field : patternFields) {
        if (const auto& pattern = record.*field.pattern) {
            dictionary.emplace(field.key, *pattern);
        }
    }
    return dictionary;
}

std::optional<CustomFileRecord> customFileRecordFromValue(const platform::Value& value) {
    const auto* dictionary = value.as<platform::Dictionary>();
    if (dictionary == nullptr) {
        return std::nullopt;
    }
    CustomFileRecord record{.filePath = textAt(*dictionary, filePathKey).value_or(""),
                            .fileType = textAt(*dictionary, fileTypeKey).value_or("")};
    if (const auto setting = dictionary->find(customFolderSettingKey); setting != dictionary->end()) {
        record.customFolderSetting =
            static_cast<OZCustomFolderSetting>(setting->second.unsignedValue().value_or(0));
    }
    if (const auto recursive = dictionary->find(recursiveKey); recursive != dictionary->end()) {
        record.recursive = recursive->second.boolValue().value_or(false);
    }
    for (const auto& field : patternFields) {
        record.*field.pattern = textAt(*dictionary, field.key);
    }
    return record;
}

bool isCompleteRecord(const CustomFileRecord& record) {
    return !record.filePath.empty() && !record.fileType.empty();
}
