#include "Model/Core/TreeView.h"

platform::Result<std::vector<std::string>> TreeView::contentsOfDirectoryBelow(const FoundPaths& found,
                                                                              std::string_view relativePath) {
    const auto item = _files.itemBelow(found._folder, relativePath);
    const auto opened = item ? item->openFolder() : platform::failure(ENOENT);
    return opened ? (*opened)->entries() : platform::failure(ENOENT);
}

platform::Result<FoundPaths> TreeView::directEntries(std::string_view folder) {
    auto opened = _files.folderAtPath(folder);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    auto names = (*opened)->entries();
    if (!names) {
        return std::unexpected(names.error());
    }
    FoundPaths found(std::move(*opened), folder);
    found.names = std::move(*names);
    return found;
}
