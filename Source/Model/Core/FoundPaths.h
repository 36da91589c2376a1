#pragma once

#include "Platform/Files/Folder.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Paths that were found below one folder: the folder's descriptor and the paths relative to it. Whoever acts
/// on them later goes from that descriptor and through no link, so nothing that happens to the tree after the
/// search leads elsewhere. The descriptor is for the run and its views alone: everybody else has names, and
/// gives them to a primitive.
class FoundPaths {
  public:
    /// Nothing, found nowhere.
    FoundPaths() = default;

    [[nodiscard]] std::string path(size_t index) const { return prefix + names[index]; }
    /// Other names below the same folder.
    [[nodiscard]] FoundPaths withNames(std::vector<std::string> others) const {
        FoundPaths found = *this;
        found.names = std::move(others);
        return found;
    }

    /// The text that stands before each relative path, as the searcher named the folder.
    std::string prefix;
    std::vector<std::string> names;

  private:
    friend class CleanupRun;
    friend class ItemLooks;
    friend class TreeView;

    FoundPaths(std::shared_ptr<const platform::Folder> folder, std::string_view folderName)
        : prefix(platform::pathPrefix(folderName))
        , _folder(std::move(folder)) {}

    std::shared_ptr<const platform::Folder> _folder;
};
