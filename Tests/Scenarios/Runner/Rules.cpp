// What goes by patterns, of a device that holds more than anybody would list.

#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/Host.h"

#include <unicode/regex.h>

namespace scenarios {

namespace fs = std::filesystem;

namespace {

/// What a container's metadata or, before there was any, the application in it says that it is.
std::string identifierOf(const fs::path& container) {
    fs::path file = container / ".com.apple.mobile_container_manager.metadata.plist";
    const bool hasMetadata = fs::exists(file);
    for (const auto& entry : fs::directory_iterator(container)) {
        if (!hasMetadata && entry.path().extension() == ".app") {
            file = entry.path() / "Info.plist";
        }
    }
    const auto list = platform::parsePropertyList(tests::contentOf(file));
    const auto* identifier =
        list ? platform::valueAt<std::string>(*list->as<platform::Dictionary>(),
                                              hasMetadata ? "MCMMetadataIdentifier" : "CFBundleIdentifier")
             : nullptr;
    return identifier == nullptr ? container.filename().string() : *identifier;
}

/// Containers have random names; here they bear the identifier of what they contain. "/private" before "/var"
/// is left out.
std::string nameOf(const std::string& path, const fs::path& root, std::map<fs::path, std::string>& names) {
    fs::path name = "/";
    fs::path below;
    for (const auto& part : fs::path(path)) {
        below /= part;
        if (part.string().size() == 36 && fs::is_directory(root / below)) {
            auto& identifier = names[below];
            identifier = identifier.empty() ? identifierOf(root / below) : identifier;
            name /= identifier;
        } else {
            name /= part;
        }
    }
    const std::string text = name.string();
    return text.starts_with("/private/var/") ? text.substr(8) : text;
}

std::string regexOf(std::string_view pattern) {
    std::string regex;
    for (size_t at = 0; at < pattern.size(); ++at) {
        const bool isMany = pattern.substr(at, 2) == "**";
        regex += pattern[at] == '.'   ? "\\."
                 : isMany             ? ".+"
                 : pattern[at] == '*' ? "[^/]*"
                                      : std::string(1, pattern[at]);
        at += isMany ? 1 : 0;
    }
    return regex;
}

} // namespace

void World::giveGoneBy(const Words& steps) {
    const bool mayBeUnused = steps.back() == "there";
    const fs::path root = folder.folder() / "Root";
    std::map<fs::path, std::string> containers;
    std::vector<std::pair<std::string, const tests::ItemState*>> items;
    std::vector<const std::string*> paths;
    const auto tree = this->tree();
    for (const auto& [path, state] : tree) {
        items.emplace_back(nameOf(path, root, containers), &state);
        paths.push_back(&path);
    }
    for (const auto& [of, line] : _rules) {
        Words patterns = wordsOf(std::ranges::count(steps, of) == 0 ? "" : expanded(line, variables));
        const bool isOfLinks = !patterns.empty() && patterns[0] == "links";
        const bool isOfFiles = !patterns.empty() && patterns[0] == "files";
        patterns.erase(patterns.begin(), patterns.begin() + (isOfLinks || isOfFiles ? 1 : 0));
        for (const auto& pattern : patterns) {
            UErrorCode error = U_ZERO_ERROR;
            icu::RegexMatcher matcher(icu::UnicodeString::fromUTF8(regexOf(pattern)), 0U, error);
            bool isUsed = mayBeUnused;
            for (size_t index = 0; index < items.size(); ++index) {
                const auto text = icu::UnicodeString::fromUTF8(items[index].first);
                const auto& state = *items[index].second;
                const bool isOfKind =
                    isOfLinks ? state.isLink() : state.isFile() || (!isOfFiles && state.isFolder());
                if (isOfKind && matcher.reset(text).matches(error)) {
                    _gone.insert(*paths[index]);
                    isOfLinks ? void(_unnamed.insert(*paths[index])) : void();
                    isUsed = true;
                }
            }
            if (!isUsed || U_FAILURE(error)) {
                throw std::runtime_error("a pattern that names nothing: " + pattern);
            }
        }
    }
}

} // namespace scenarios
