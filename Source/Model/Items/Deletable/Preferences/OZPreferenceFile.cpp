#include "Model/Items/Deletable/Preferences/OZPreferenceFile.h"

#include "Platform/Files/Path.h"

#include <algorithm>

namespace {

/// "bar_baz" for "com.foo.bar.baz", "bar" for "foo.bar".
std::string provisionalTitle(std::string_view path) {
    std::string name(platform::nameWithoutExtension(path));
    const auto dots = std::ranges::count(name, '.');
    for (auto prefix = std::min<std::ptrdiff_t>(dots, 2); prefix > 0; --prefix) {
        name.erase(0, name.find('.') + 1);
    }
    std::ranges::replace(name, '.', '_');
    return name;
}

} // namespace

OZPreferenceFile::OZPreferenceFile(platform::Device& device, std::vector<std::string> paths,
                                   std::string identifier)
    : OZDeletableItem(device, std::move(paths), std::move(identifier)) {
    setTitle(provisionalTitle(path()));
}

OZPreferenceFile::OZPreferenceFile(platform::Device& device, const std::string& path)
    : OZPreferenceFile(device, {path}, path) {}
