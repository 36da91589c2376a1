#include "Model/Apps/AppIconFiles.h"

#include "Model/Apps/InstalledApps.h"
#include "Platform/Files/FileManager.h"

#include <algorithm>
#include <ranges>

namespace {

constexpr std::string_view extension = ".png";
constexpr std::string_view scales[] = {"", "@2x", "@3x"};
constexpr std::string_view idioms[] = {"", "~iphone", "~ipad"};
// What icons are called where nothing tells of them.
constexpr std::string_view classicalNames[] = {"AppIcon29x29", "AppIcon40x40", "AppIcon60x60", "Icon-Small",
                                               "Icon-60",      "Icon",         "icon"};
// More than any bundle has; a list that somebody has made to be long costs no more.
constexpr size_t mostIconNames = 32;
constexpr size_t mostIconFiles = 32;
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

/// Calls `visit` with each file that a name may stand for and that is there, until it says that this is
/// enough.
template <class Visit>
bool visitIconFiles(platform::FileManager& fileManager, std::string_view bundlePath, std::string_view name,
                    Visit visit) {
    auto stem = platform::joinPath(bundlePath, name);
    const auto visitFile = [&](const std::string& path) { return isFile(fileManager, path) && visit(path); };
    if (!stem.ends_with(extension)) {
        if (visitFile(stem)) {
            return true;
        }
    } else {
        stem.resize(stem.size() - extension.size());
    }
    for (const auto scale : scales) {
        for (const auto idiom : idioms) {
            if (visitFile(std::string(stem).append(scale).append(idiom).append(extension))) {
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
               return visitIconFiles(fileManager, bundlePath, name, [](const std::string&) { return true; });
           });
}

std::vector<std::string> iconFilesOfBundle(platform::FileManager& fileManager, std::string_view bundlePath) {
    std::vector<std::string> files;
    const auto addFilesOf = [&](std::string_view name) {
        visitIconFiles(fileManager, bundlePath, name, [&](const std::string& path) {
            if (std::ranges::find(files, path) == files.end()) {
                files.push_back(path);
            }
            return files.size() >= mostIconFiles;
        });
    };
    if (const auto infoPlist = readInfoPlist(fileManager, bundlePath)) {
        std::ranges::for_each(iconNames(*infoPlist) | std::views::take(mostIconNames), addFilesOf);
    }
    if (files.empty()) {
        std::ranges::for_each(classicalNames, addFilesOf);
    }
    return files;
}
