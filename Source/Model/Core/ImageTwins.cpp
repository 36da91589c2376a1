#include "Model/Core/ImageTwins.h"

namespace {

// A name is bytes: each is a character of its own here, and comes back as it was.
icu::UnicodeString characters(std::string_view bytes) {
    icu::UnicodeString text;
    for (const char byte : bytes) {
        text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    }
    return text;
}

std::string bytes(const icu::UnicodeString& characters) {
    std::string text;
    for (int32_t index = 0; index < characters.length(); ++index) {
        text += static_cast<char>(characters.charAt(index));
    }
    return text;
}

} // namespace

ImageTwins::ImageTwins(TreeView& tree, std::string_view suffixes, std::string_view twinsSuffix)
    : _tree(tree)
    , _suffixes(characters(suffixes), UREGEX_CASE_INSENSITIVE, _status)
    , _twinsSuffix(characters(twinsSuffix)) {}

FoundPaths ImageTwins::twinsOf(const FoundPaths& images) {
    FoundPaths twins = images.withNames({});
    // The twin of such a folder would be another application's.
    if (twinPath(images.prefix) != images.prefix) {
        return twins;
    }
    Listings listings;
    for (const auto& image : images.names) {
        std::string twin = twinPath(image);
        if (exists(twin, images, listings)) {
            twins.names.push_back(std::move(twin));
        }
    }
    return twins;
}

std::string ImageTwins::twinPath(std::string_view path) {
    const icu::UnicodeString text = characters(path);
    _suffixes.reset(text);
    return bytes(_suffixes.replaceAll(_twinsSuffix, _status));
}

bool ImageTwins::exists(const std::string& path, const FoundPaths& images, Listings& listings) const {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
    auto listing = listings.find(folder);
    if (listing == listings.end()) {
        listing = listings.emplace(folder, namesIn(folder, images)).first;
    }
    return listing->second.contains(path.substr(slash + 1));
}

ImageTwins::Names ImageTwins::namesIn(const std::string& folder, const FoundPaths& images) const {
    const auto names = _tree.contentsOfDirectoryBelow(images, folder);
    return names ? Names(names->begin(), names->end()) : Names();
}
