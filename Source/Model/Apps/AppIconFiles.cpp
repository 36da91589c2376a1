#include "Model/Apps/AppIconFiles.h"

#include "Model/Apps/InstalledApps.h"
#include "Platform/Files/FileManager.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr std::string_view extension = ".png";
constexpr std::string_view scales[] = {"", "@2x", "@3x"};
constexpr std::string_view idioms[] = {"", "~iphone", "~ipad"};
constexpr std::string_view iconKeys[] = {"CFBundleIcons", "CFBundleIcons~ipad"};

void addNamesAt(const platform::Dictionary& dictionary, std::string_view key,
                std::vector<std::string>& names) {
    if (const auto* name = platform::valueAt<std::string>(dictionary, key)) {
        names.push_back(*name);
    }
    if (const auto* array = platform::valueAt<platform::Array>(dictionary, key)) {
        for (const auto& element : *array) {
            if (const auto* name = element.as<std::string>()) {
                names.push_back(*name);
            }
        }
    }
}

std::vector<std::string> iconNames(const platform::Dictionary& infoPlist) {
    std::vector<std::string> names;
    for (const auto key : iconKeys) {
        const auto* icons = platform::valueAt<platform::Dictionary>(infoPlist, key);
        if (const auto* primary =
                icons ? platform::valueAt<platform::Dictionary>(*icons, "CFBundlePrimaryIcon") : nullptr) {
            addNamesAt(*primary, "CFBundleIconFiles", names);
        }
    }
    addNamesAt(infoPlist, "CFBundleIconFiles", names);
    addNamesAt(infoPlist, "CFBundleIconFile", names);
    std::erase(names, "");
    return names;
}

bool isFile(platform::FileManager& fileManager, const std::string& path) {
    bool isDirectory = false;
    return fileManager.fileExistsAtPath(path, &isDirectory) && !isDirectory;
}

bool hasIconFile(platform::FileManager& fileManager, std::string_view bundlePath, const std::string& name) {
    auto stem = platform::joinPath(bundlePath, name);
    if (isFile(fileManager, stem)) {
        return true;
    }
    if (stem.ends_with(extension)) {
        stem.resize(stem.size() - extension.size());
    }
    for (const auto scale : scales) {
        for (const auto idiom : idioms) {
            if (isFile(fileManager, std::string(stem).append(scale).append(idiom).append(extension))) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool bundleHasIconFile(platform::FileManager& fileManager, std::string_view bundlePath) {
    const auto infoPlist = readInfoPlist(fileManager, bundlePath);
    return infoPlist && std::ranges::any_of(iconNames(*infoPlist), [&](const std::string& name) {
               return hasIconFile(fileManager, bundlePath, name);
           });
}
