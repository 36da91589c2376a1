#include "Platform/Device/DeviceFacts.h"

#include "Platform/Files/FileManager.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

constexpr std::string_view systemVersionFile = "/System/Library/CoreServices/SystemVersion.plist";
constexpr uint64_t mostBytes = uint64_t{4} << 20U;

/// A property list of the tree that has the model, and the keys that lead to it.
struct ModelPlace {
    std::string_view file;
    std::array<std::string_view, 2> keys;
};

// The system keeps what the hardware is in a cache, under scrambled names, and the network's settings name
// the machine that they were made for; the first that has a model counts.
constexpr std::string_view gestaltKey = "h9jDsbgj7xIVeIQ8S3/X3Q";
constexpr std::array modelPlaces = {
    ModelPlace{"/var/containers/Shared/SystemGroup/systemgroup.com.apple.mobilegestaltcache/Library/Caches/"
               "com.apple.MobileGestalt.plist",
               {"CacheExtra", gestaltKey}},
    ModelPlace{"/var/mobile/Library/Caches/com.apple.MobileGestalt.plist", {"CacheExtra", gestaltKey}},
    ModelPlace{"/var/preferences/SystemConfiguration/preferences.plist", {"Model"}},
    ModelPlace{"/var/preferences/SystemConfiguration/NetworkInterfaces.plist", {"Model"}},
};
constexpr std::array<std::string_view, 3> families = {"iPad", "iPhone", "iPod"};

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

/// Empty where there is none that can be read.
Dictionary dictionaryOfTree(FileManager& fileManager, std::string_view path) {
    const auto content = fileManager.contentsAtPath(path, mostBytes);
    const auto parsed = content ? parsePropertyList(*content) : failure(ENOENT);
    const auto* dictionary = parsed ? parsed->as<Dictionary>() : nullptr;
    return dictionary != nullptr ? *dictionary : Dictionary{};
}

std::string productVersionOfTree(FileManager& fileManager) {
    return textAt(dictionaryOfTree(fileManager, systemVersionFile), "ProductVersion").value_or("");
}

std::string hardwareModelOfTree(FileManager& fileManager) {
    for (const ModelPlace& place : modelPlaces) {
        const Dictionary list = dictionaryOfTree(fileManager, place.file);
        const auto [first, second] = place.keys;
        const auto* inner = second.empty() ? nullptr : valueAt<Dictionary>(list, first);
        const auto* model = second.empty()     ? valueAt<std::string>(list, first)
                            : inner != nullptr ? valueAt<std::string>(*inner, second)
                                               : nullptr;
        if (model != nullptr && isHardwareModel(*model)) {
            return *model;
        }
    }
    return {};
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

bool isHardwareModel(std::string_view text) {
    const auto* const family =
        std::ranges::find_if(families, [&](std::string_view name) { return text.starts_with(name); });
    if (family == families.end()) {
        return false;
    }
    text.remove_prefix(family->size());
    const size_t comma = text.find(',');
    const auto isNumber = [](std::string_view digits) {
        return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    };
    return comma != std::string_view::npos && isNumber(text.substr(0, comma)) &&
           isNumber(text.substr(comma + 1));
}

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
        facts.hardwareModel =
            given.hardwareModel.empty() ? hardwareModelOfTree(fileManager) : given.hardwareModel;
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
