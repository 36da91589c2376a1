#include "Model/Core/ItemLooks.h"

#include <cstddef>

namespace {

constexpr size_t namesInPiece = 1024;

} // namespace

ItemLooks::ItemLooks(platform::Queue& queue, const platform::FileManager& fileManager,
                     const FoundPaths& found)
    : _fileManager(fileManager)
    , _folder(found._folder)
    , _prefix(found.prefix)
    , _pieces(1)
    , _work(queue) {
    for (const auto& name : found.names) {
        add(name);
    }
}

void ItemLooks::add(std::string_view name) {
    Piece& piece = _pieces.back();
    piece.names.emplace_back(name);
    if (piece.names.size() == namesInPiece) {
        _pieces.emplace_back();
        _work.add([this, &piece] { lookAt(piece); });
    }
}

void ItemLooks::lookAt(Piece& piece) const {
    platform::FileManager ownHandle(_fileManager);
    piece.looks.resize(piece.names.size());
    for (size_t index = 0; index < piece.names.size(); ++index) {
        const auto item = ownHandle.itemBelow(_folder, piece.names[index]);
        const auto attributes = item ? item->attributes() : std::unexpected(item.error());
        if (attributes) {
            piece.looks[index] = {.exists = true, .type = attributes->type, .size = attributes->size};
        }
    }
}

void ItemLooks::finish() {
    lookAt(_pieces.back());
    _work.finish();
}
