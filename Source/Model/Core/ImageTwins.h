#pragma once

#include "Model/Core/TreeView.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include <unicode/regex.h>

/// Finds the twins of images: the same picture at another scale, beside the image and with another suffix.
class ImageTwins {
  public:
    /// `suffixes` is a regular expression of the images' suffixes, compared without regard to case;
    /// `twinsSuffix` is what stands in their place in a twin's name, empty for the lowest scale. The view
    /// outlives the object.
    ImageTwins(TreeView& tree, std::string_view suffixes, std::string_view twinsSuffix);

    /// The twins that are there, in the order of the images; one for each image, so that two images may give
    /// the same twin. A folder with a suffix in its name is looked for under its twin's name, as an image is.
    [[nodiscard]] FoundPaths twinsOf(const FoundPaths& images);

  private:
    using Names = std::unordered_set<std::string>;
    /// By the folder's path below the top. Each is listed once, however many of its names are asked for.
    using Listings = std::unordered_map<std::string, Names>;

    [[nodiscard]] std::string twinPath(std::string_view path);
    [[nodiscard]] bool exists(const std::string& path, const FoundPaths& images, Listings& listings) const;
    [[nodiscard]] Names namesIn(const std::string& folder, const FoundPaths& images) const;

    TreeView& _tree;
    UErrorCode _status = U_ZERO_ERROR;
    icu::RegexMatcher _suffixes;
    icu::UnicodeString _twinsSuffix;
};
