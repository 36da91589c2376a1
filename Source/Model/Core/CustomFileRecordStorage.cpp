#include "Model/Core/CustomFileRecordStorage.h"

namespace {

constexpr std::string_view filePathKey = "filePath";
constexpr std::string_view fileTypeKey = "fileType";
constexpr std::string_view customFolderSettingKey = "customFolderSetting";
constexpr std::string_view recursiveKey = "recursive";

struct PatternField {
    std::string_view key;
    std::optional<std::string> CustomFileRecord::*pattern;
};

constexpr PatternField patternFields[] = {
    {"startPattern", &CustomFileRecord::startPattern},
    {"middlePattern", &CustomFileRecord::middlePattern},
    {"endPattern", &CustomFileRecord::endPattern},
};

/// Takes a text out of a dictionary; what is no text stays there.
std::optional<std::string> takeText(platform::Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    auto* text = found == dictionary.end() ? nullptr : found->second.as<std::string>();
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string taken = std::move(*text);
    dictionary.erase(found);
    return taken;
}

/// Takes what can be read of a folder's settings. What cannot must not widen what goes.
void takeFolderSettings(CustomFileRecord& record) {
    platform::Dictionary& stored = record.other;
    if (const auto recursive = stored.find(recursiveKey); recursive != stored.end()) {
        record.recursive = recursive->second.truthValue().value_or(false);
        stored.erase(recursive);
    }
    bool isUnclear = false;
    for (const auto& field : patternFields) {
        record.*field.pattern = takeText(stored, field.key);
        isUnclear |= stored.contains(field.key);
    }
    const auto setting = stored.find(customFolderSettingKey);
    if (setting == stored.end()) {
        return;
    }
    const auto number = setting->second.unsignedValue();
    if (!number || (isUnclear && *number != 0)) {
        record.customFolderSetting = OZCustomFolderSetting::unknown;
        return;
    }
    record.customFolderSetting = static_cast<OZCustomFolderSetting>(*number);
    stored.erase(setting);
}

} // namespace

platform::Value valueFromCustomFileRecord(const CustomFileRecord& record) {
    platform::Dictionary dictionary = record.other;
    dictionary.emplace(filePathKey, record.filePath.value_or(""));
    dictionary.emplace(fileTypeKey, record.fileType.value_or(""));
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
    CustomFileRecord record{.other = *dictionary};
    record.filePath = takeText(record.other, filePathKey);
    record.fileType = takeText(record.other, fileTypeKey);
    if (record.other.contains(fileTypeKey)) {
        record.fileType = "";
    }
    takeFolderSettings(record);
    return record;
}

bool isCompleteRecord(const CustomFileRecord& record) {
    return record.filePath && record.fileType;
}
