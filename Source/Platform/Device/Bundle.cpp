#include "Platform/Device/Bundle.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace platform {

namespace {

// Where the executable cannot be found out, it is taken for an installed one.
fs::path directoryBesideExecutable() {
    std::error_code error;
    const fs::path link = fs::read_symlink("/proc/self/exe", error);
    const fs::path executable = error ? fs::path("/usr/bin/ozvarine") : link;
    return executable.parent_path().parent_path() / "share" / "ozvarine";
}

} // namespace

Bundle::Bundle()
    : Bundle(directoryBesideExecutable()) {}

Bundle::Bundle(fs::path directory)
    : _directory(std::move(directory)) {}

std::vector<std::string> Bundle::resourceNames() const {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(_directory, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename());
    }
    std::ranges::sort(names);
    return names;
}

Result<std::string> Bundle::contentsOfResource(std::string_view name) const {
    std::error_code error;
    if (name.contains('/') || !fs::is_regular_file(_directory / name, error)) {
        return failure(ENOENT);
    }
    std::ifstream file(_directory / name, std::ios::binary);
    if (!file) {
        return failure(EACCES);
    }
    return std::string{std::istreambuf_iterator(file), {}};
}

std::optional<std::string> Bundle::localizedString(std::string_view key, std::string_view table) const {
    const std::scoped_lock lock(_mutex);
    auto found = _tables.find(table);
    if (found == _tables.end()) {
        const auto contents = contentsOfResource(std::string(table) + ".strings");
        auto texts = contents ? parseStringsFile(*contents) : StringTable{};
        found = _tables.emplace(table, std::move(texts).value_or(StringTable{})).first;
    }
    const auto text = found->second.find(key);
    return text == found->second.end() ? std::nullopt : std::optional(text->second);
}

std::optional<std::string> Bundle::infoString(std::string_view key) const {
    const auto contents = contentsOfResource("Info.plist");
    const auto info = contents ? parsePropertyList(*contents) : Value();
    const auto* dictionary = info ? info->as<Dictionary>() : nullptr;
    const auto* text = dictionary != nullptr ? valueAt<std::string>(*dictionary, key) : nullptr;
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::string Bundle::bundleIdentifier() const {
    return infoString("CFBundleIdentifier").value_or("");
}

} // namespace platform
