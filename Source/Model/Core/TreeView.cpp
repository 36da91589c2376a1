#include "Model/Core/TreeView.h"

platform::Result<std::vector<std::string>>
TreeView::contentsOfDirectoryBelow(const std::shared_ptr<const platform::Folder>& folder,
                                   std::string_view relativePath) {
    const auto item = _files.itemBelow(folder, relativePath);
    const auto opened = item ? item->openFolder() : platform::failure(ENOENT);
    return opened ? (*opened)->entries() : platform::failure(ENOENT);
}

platform::Result<platform::FoundPaths> TreeView::directEntries(std::string_view folder) {
    auto opened = _files.folderAtPath(folder);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    auto names = (*opened)->entries();
    if (!names) {
        return std::unexpected(names.error());
    }
    return platform::FoundPaths{
        .folder = std::move(*opened), .prefix = platform::pathPrefix(folder), .names = std::move(*names)};
}
