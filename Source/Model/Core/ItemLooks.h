#pragma once

#include "Model/Core/FoundPaths.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Threads/BackgroundWork.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What an analysis asks of an item.
struct ItemLook {
    bool exists = false;
    platform::FileType type = platform::FileType::unknown;
    /// Bytes.
    uint64_t size = 0;
};

/// Looks at items below one folder, on several threads, while more of them are still being found. An analysis
/// changes nothing, so nobody can tell that the later items were looked at before the first ones were
/// counted.
class ItemLooks {
  public:
    /// Begins with the names that are found already. The queue outlives it.
    ItemLooks(platform::Queue& queue, const platform::FileManager& fileManager, const FoundPaths& found);

    /// One more name below the folder.
    void add(std::string_view name);
    /// Calls the visitor with the path and the look of each item that exists, in the order they were added.
    template <class Visitor>
    void visit(Visitor visitor) {
        finish();
        std::string path = _prefix;
        for (const Piece& piece : _pieces) {
            for (size_t index = 0; index < piece.looks.size(); ++index) {
                if (piece.looks[index].exists) {
                    path.replace(_prefix.size(), std::string::npos, piece.names[index]);
                    visitor(std::string_view(path), piece.looks[index]);
                }
            }
        }
    }

  private:
    struct Piece {
        std::vector<std::string> names;
        std::vector<ItemLook> looks;
    };

    void lookAt(Piece& piece) const;
    void finish();

    platform::FileManager _fileManager;
    std::shared_ptr<const platform::Folder> _folder;
    std::string _prefix;
    // Pieces stay where they are while others are added. The work on them ends before they do.
    std::deque<Piece> _pieces;
    platform::BackgroundWork _work;
};
