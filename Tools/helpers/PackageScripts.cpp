#include "PackageScripts.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array<std::string_view, 2> scriptSuffixes = {".prerm", ".postrm"};
constexpr std::array<std::string_view, 4> removingOptions = {"-r", "--remove", "-P", "--purge"};

/// "name:architecture" without the architecture.
std::string plainName(std::string_view name) {
    return std::string(name.substr(0, name.find(':')));
}

bool isPackageName(std::string_view name) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-._";
    return !name.empty() && name.find_first_not_of(letters) == std::string_view::npos;
}

/// A regular expression that matches this name alone.
std::string expressionFor(std::string_view name) {
    std::string expression = "^";
    for (const char character : name) {
        expression +=
            character == '.' || character == '+' ? std::string{'[', character, ']'} : std::string{character};
    }
    return expression + "$";
}

} // namespace

PackageScripts::PackageScripts(int database) {
    const int folder = ::openat(database, "info", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) {
        return;
    }
    DIR* const entries = ::fdopendir(folder);
    while (const dirent* entry = entries != nullptr ? ::readdir(entries) : nullptr) {
        const std::string_view file = entry->d_name;
        for (const std::string_view suffix : scriptSuffixes) {
            const std::string name = plainName(file.substr(0, file.rfind('.')));
            if (file.ends_with(suffix) && isPackageName(name)) {
                _packages.push_back(name);
            }
        }
    }
    ::closedir(entries);
    std::ranges::sort(_packages);
    _packages.erase(std::unique(_packages.begin(), _packages.end()), _packages.end());
}

std::vector<std::string> PackageScripts::keepingOptions() const {
    std::vector<std::string> options;
    for (const std::string& package : _packages) {
        options.emplace_back("-o");
        options.push_back("APT::NeverAutoRemove::=" + expressionFor(package));
    }
    return options;
}

std::string PackageScripts::names() const {
    std::string list;
    for (const std::string& package : _packages) {
        list += (list.empty() ? "" : " ") + package;
    }
    return list;
}

std::string PackageScripts::removedBy(const std::vector<std::string>& arguments) const {
    const bool removes = std::ranges::any_of(arguments, [](const std::string& argument) {
        return std::ranges::find(removingOptions, argument) != removingOptions.end();
    });
    for (size_t index = 1; removes && index < arguments.size(); ++index) {
        const std::string name = plainName(arguments[index]);
        if (std::ranges::binary_search(_packages, name)) {
            return name;
        }
    }
    return "";
}
