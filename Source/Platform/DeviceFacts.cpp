#include "Platform/DeviceFacts.h"

#include "Platform/FileManager.h"

namespace platform {

namespace {

constexpr std::string_view systemVersionFile = "/System/Library/CoreServices/SystemVersion.plist";

std::optional<std::string> textAt(const Dictionary& dictionary, std::string_view key) {
    const auto* text = valueAt<std::string>(dictionary, key);
    return text != nullptr && !text->empty() ? std::optional(*text) : std::nullopt;
}

double numberAt(const Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? 0 : found->second.numberValue().value_or(0);
}

uint64_t bytesAt(const Dictionary& dictionary, std::string_view key) {
    return Value(numberAt(dictionary, key)).unsignedValue().value_or(0);
}

std::string productVersionOfTree(FileManager& fileManager) {
    const auto content = fileManager.contentsAtPath(systemVersionFile, uint64_t{1} << 20U);
    const auto parsed = content ? parsePropertyList(*content) : failure(ENOENT);
    const auto* dictionary = parsed ? parsed->as<Dictionary>() : nullptr;
    return dictionary != nullptr ? textAt(*dictionary, "ProductVersion").value_or("") : "";
}

std::map<std::string, VolumeFacts, std::less<>> volumesAt(const Dictionary& dictionary) {
    std::map<std::string, VolumeFacts, std::less<>> volumes;
    if (const auto* given = valueAt<Dictionary>(dictionary, "Volumes")) {
        for (const auto& [mountPoint, value] : *given) {
            if (const auto* sizes = value.as<Dictionary>()) {
                volumes[mountPoint] = {.size = bytesAt(*sizes, "Size"), .free = bytesAt(*sizes, "Free")};
            }
        }
    }
    return volumes;
}

} // namespace

DeviceFacts DeviceFacts::read(const Dictionary& dictionary, FileManager& fileManager,
                              const GivenFacts& given) {
    DeviceFacts facts{.foundationVersion = numberAt(dictionary, "FoundationVersion"),
                      .coreFoundationVersion = numberAt(dictionary, "CoreFoundationVersion"),
                      .hardwareModel = textAt(dictionary, "HardwareModel").value_or(""),
                      .systemVersion = textAt(dictionary, "SystemVersion").value_or(""),
                      .timeZone = textAt(dictionary, "TimeZone"),
                      .carrierCountryCode = textAt(dictionary, "CarrierCountryCode"),
                      .carrierISOCountryCode = textAt(dictionary, "CarrierISOCountryCode"),
                      .volumes = volumesAt(dictionary),
                      .applications = std::nullopt};
    if (const auto* applications = valueAt<Array>(dictionary, "Applications")) {
        facts.applications = *applications;
    }
    if (facts.systemVersion.empty()) {
        facts.systemVersion = productVersionOfTree(fileManager);
    }
    if (facts.systemVersion.empty()) {
        facts.systemVersion = given.systemVersion;
    }
    if (facts.hardwareModel.empty()) {
        facts.hardwareModel = given.hardwareModel;
    }
    if (const auto version = systemVersionForProductVersion(facts.systemVersion)) {
        if (facts.foundationVersion == 0) {
            facts.foundationVersion = version->foundationVersion;
        }
        if (facts.coreFoundationVersion == 0) {
            facts.coreFoundationVersion = version->coreFoundationVersion;
        }
    }
    return facts;
}

} // namespace platform
