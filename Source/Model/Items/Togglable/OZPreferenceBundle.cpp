#include "Model/Items/Togglable/OZPreferenceBundle.h"

#include "Categories/FileURLs.h"
#include "Model/Apps/InstalledApps.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <limits>

#include <fmt/format.h>

namespace {

constexpr uint64_t pageLimit = uint64_t{16} << 20U;
constexpr std::string_view bundleRoots[] = {"/Library/PreferenceBundles",
                                            "/System/Library/PreferenceBundles"};
constexpr std::string_view scaleSuffixes[] = {"", "@2x", "@3x"};

std::optional<OZPreferenceBundle::Entry> readEntry(platform::FileManager fileManager, std::string_view path) {
    const auto page = readDictionary(fileManager, path, pageLimit);
    const auto* entry = page ? platform::valueAt<platform::Dictionary>(*page, "entry") : nullptr;
    const auto* label = entry == nullptr ? nullptr : platform::valueAt<std::string>(*entry, "label");
    if (label == nullptr) {
        return std::nullopt;
    }
    return OZPreferenceBundle::Entry{.label = *label, .dictionary = *entry};
}

std::optional<std::string> textAt(const platform::Dictionary& dictionary, std::string_view key) {
    const auto* text = platform::valueAt<std::string>(dictionary, key);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

double numberAt(const platform::Array& numbers, size_t index, double otherwise) {
    return index < numbers.size() ? numbers[index].numberValue().value_or(otherwise) : otherwise;
}

bool isReadableFile(platform::FileManager& fileManager, const std::string& path) {
    return fileManager.openForReading(path).has_value();
}

/// The image for any scale, else the file of just this name.
std::optional<std::string> imageInFolder(platform::FileManager& fileManager, std::string_view folder,
                                         std::string_view name) {
    const std::string_view extension = platform::pathExtension(name);
    for (const std::string_view suffix : scaleSuffixes) {
        const std::string path = fmt::format("{}/{}{}{}{}", folder, platform::withoutPathExtension(name),
                                             suffix, extension.empty() ? "" : ".", extension);
        if (isReadableFile(fileManager, path)) {
            return path;
        }
    }
    const std::string path = fmt::format("{}/{}", folder, name);
    return isReadableFile(fileManager, path) ? std::optional(path) : std::nullopt;
}

} // namespace

std::shared_ptr<OZPreferenceBundle> OZPreferenceBundle::make(platform::Device& device,
                                                             std::string_view identifier,
                                                             std::string_view fileNameWithoutExtension) {
    auto found = find<OZPreferenceBundle>(device, identifier, fileNameWithoutExtension);
    if (!found) {
        return nullptr;
    }
    auto entry = readEntry(device.fileManager(), found->currentPath());
    return entry ? std::make_shared<OZPreferenceBundle>(*std::move(found), *std::move(entry)) : nullptr;
}

OZPreferenceBundle::OZPreferenceBundle(Found found, Entry entry)
    : OZTogglablePkgFile(std::move(found))
    , _plistIconValue(textAt(entry.dictionary, "icon"))
    , _bundle(textAt(entry.dictionary, "bundle")) {
    const auto* filter = platform::valueAt<platform::Dictionary>(entry.dictionary, "pl_filter");
    checkiOSVersionWithCFVersionArray(
        filter == nullptr ? nullptr : platform::valueAt<platform::Array>(*filter, "CoreFoundationVersion"));
    setTitle(std::move(entry.label));
}

void OZPreferenceBundle::checkiOSVersionWithCFVersionArray(const platform::Array* versions) {
    static const platform::Array noVersions;
    const platform::Array& bounds = versions == nullptr ? noVersions : *versions;
    const double version = device().facts().coreFoundationVersion;
    if (version >= numberAt(bounds, 0, 0) &&
        version < numberAt(bounds, 1, std::numeric_limits<double>::max())) {
        _isForCurrentiOSVersion = true;
    }
}

std::optional<std::string> OZPreferenceBundle::iconURL() {
    if (!_iconURL && _plistIconValue && !_plistIconValue->empty()) {
        if (const auto path = iconPath()) {
            _iconURL = fileURLWithPath(*path);
        }
        // What was not found is not searched again.
        _plistIconValue.reset();
    }
    return _iconURL;
}

std::optional<std::string> OZPreferenceBundle::iconPath() const {
    const std::string& name = *_plistIconValue;
    if (name.starts_with('/')) {
        return name;
    }
    auto fileManager = device().fileManager();
    if (_bundle && !_bundle->empty()) {
        for (const std::string_view root : bundleRoots) {
            if (auto path = imageInFolder(fileManager, fmt::format("{}/{}.bundle", root, *_bundle), name)) {
                return path;
            }
        }
    }
    const std::string_view folder = platform::deletingLastPathComponent(enabledPath());
    const std::string path = fmt::format("{}/{}", folder, name);
    return isReadableFile(fileManager, path) ? std::optional(path) : std::nullopt;
}
