#include "DeviceBuild.h"

#include "Content.h"

namespace ozdevice {
namespace {

constexpr int64_t day = 24 * 3600;

std::string expanded(std::string_view base, std::string_view path, std::string_view identifier) {
    constexpr std::string_view placeholder = "{id}";
    std::string text = std::string(base) + std::string(path);
    for (size_t at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at)) {
        text.replace(at, placeholder.size(), identifier);
    }
    return text;
}

} // namespace

DeviceBuild::DeviceBuild(TreeWriter& writer, const Generation& made, const DeviceOptions& wanted)
    : tree(writer)
    , generation(made)
    , options(wanted)
    , random(wanted.seed) {}

void DeviceBuild::add(std::span<const TreeEntry> entries, std::string_view base,
                      std::string_view identifier) {
    for (const TreeEntry& entry : entries) {
        if (generation.major >= entry.since && generation.major <= entry.until) {
            addEntry(entry, expanded(base, entry.path, identifier));
        }
    }
}

void DeviceBuild::addEntry(const TreeEntry& entry, const std::string& path) {
    const int64_t age = entry.ageInDays == anyAge ? someAge() : entry.ageInDays * day;
    if (!entry.target.empty()) {
        tree.link(path, std::string(entry.target));
    } else if (path.ends_with('/')) {
        tree.folder(path, age);
    } else {
        const bool isProgram = (entry.mode & 0111) != 0;
        tree.file(path, isProgram ? programImage(random) : contentForPath(path, random), {entry.mode, age});
    }
}

void DeviceBuild::add(std::string_view path, std::string_view content) {
    tree.file(path, content, {.age = someAge()});
}

void DeviceBuild::add(std::string_view path, const platform::Dictionary& propertyList) {
    const auto format =
        _nextIsBinary ? platform::PropertyListFormat::binary : platform::PropertyListFormat::xml;
    _nextIsBinary = !_nextIsBinary;
    add(path, std::string_view(serializePropertyList(propertyList, format)));
}

} // namespace ozdevice
