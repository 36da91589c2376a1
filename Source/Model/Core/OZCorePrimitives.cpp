#include "Model/Core/ItemLooks.h"
#include "Model/Core/OZCore.h"
#include "Model/Core/SizeSum.h"
#include "Platform/BackgroundWork.h"

#include <algorithm>
#include <functional>
#include <utility>

using platform::FileType;
using platform::FoundPaths;
using platform::Item;

namespace {

template <class Match>
bool anyOf(std::span<const std::string_view> patterns, Match match) {
    return std::ranges::any_of(patterns, match);
}

bool endsInBackupExtension(std::string_view path) {
    return path.ends_with(OZCore::backupExtension);
}

// Applies one primitive's work to every item that can be found, with the text that names it.
template <class Work>
void forEachItem(platform::FileManager& fileManager, const OZCore::Paths& paths, Work work) {
    for (const auto& path : paths) {
        work(fileManager.itemAtPath(path), path);
    }
}

template <class Work>
void forEachItem(platform::FileManager& fileManager, const FoundPaths& found, Work work) {
    std::string path = found.prefix;
    for (const auto& name : found.names) {
        path.replace(found.prefix.size(), std::string::npos, name);
        work(fileManager.itemBelow(found.folder, name), path);
    }
}

template <class Work>
auto whereFound(Work work) {
    return [work](const platform::Result<Item>& item, std::string_view path) {
        if (item) {
            work(*item, path);
        }
    };
}

} // namespace

void OZCore::del(const Paths& paths) {
    forEachItem(*this, paths, whereFound([&](const Item& item, auto path) { delItem(item, path); }));
}

void OZCore::del(const FoundPaths& found) {
    if (_mode == OZCoreMode::analyze) {
        ItemLooks looks(*this, found);
        countLooks(looks, [](const ItemLook& look) { return look.type == FileType::regular; });
        return;
    }
    forEachItem(*this, found, whereFound([&](const Item& item, auto path) { delItem(item, path); }));
}

void OZCore::delr(const Paths& paths) {
    delrEach(paths);
}

void OZCore::delr(const FoundPaths& found) {
    delrEach(found);
}

// A later item may lie inside of a folder that has been walked and is still there: its size is read before it
// gets another name.
template <class List>
void OZCore::delrEach(const List& list) {
    SizeSum sizes;
    forEachItem(*this, list, whereFound([&](const Item& item, auto path) {
        delrItem(item, path, sizes);
        if (_mode == OZCoreMode::test) {
            std::ignore = sizes.total();
        }
    }));
    addSize(sizes.total());
}

void OZCore::quickDel(const Paths& paths) {
    forEachItem(*this, paths, whereFound([&](const Item& item, auto path) { quickDelItem(item, path); }));
}

void OZCore::quickDel(const FoundPaths& found) {
    if (_mode == OZCoreMode::analyze) {
        ItemLooks looks(*this, found);
        countLooks(looks);
        return;
    }
    forEachItem(*this, found, [&](const platform::Result<Item>& item, std::string_view path) {
        if (item) {
            quickDelItem(*item, path);
        } else {
            noteUnreached(path, item.error());
        }
    });
}

void OZCore::quickDelFound(const std::vector<std::string>& arguments) {
    if (_mode != OZCoreMode::analyze) {
        quickDel(find(arguments));
        return;
    }
    std::optional<ItemLooks> looks;
    search({arguments.front()}, {arguments.begin() + 1, arguments.end()},
           [&](const FoundPaths& home, std::string_view name) {
               if (!looks) {
                   looks.emplace(*this, home);
               }
               looks->add(name);
           });
    if (looks) {
        countLooks(*looks);
    }
}

void OZCore::countLooks(ItemLooks& looks, const std::function<bool(const ItemLook&)>& isWanted) {
    looks.visit([&](std::string_view path, const ItemLook& look) {
        if (!isWanted || isWanted(look)) {
            addSize(look.size);
            count(path);
        }
    });
}

void OZCore::quickDelLang(const Paths& paths) {
    forEachItem(*this, paths, [&](const auto& item, auto path) { quickDelLangItem(item, path); });
}

void OZCore::quickDelLang(const FoundPaths& found) {
    forEachItem(*this, found, [&](const auto& item, auto path) { quickDelLangItem(item, path); });
}

void OZCore::delItem(const Item& item, std::string_view path) {
    const auto attributes = item.attributes();
    if (!attributes || attributes->type != FileType::regular) {
        return;
    }
    count(path);
    if (_mode == OZCoreMode::clean) {
        std::ignore = removeItem(item, path, StayedItem::counted);
        return;
    }
    addSize(attributes->size);
    if (const auto moved = moveToBackup(item, path, attributes->type); !moved) {
        noteStayed(path, moved.error(), StayedItem::counted);
    }
}

void OZCore::delrItem(const Item& item, std::string_view path, SizeSum& sizes,
                      platform::BackgroundWork* removals) {
    const auto attributes = item.attributes();
    if (!attributes || (attributes->type != FileType::regular && attributes->type != FileType::directory)) {
        return;
    }
    count(path);
    if (attributes->type == FileType::directory) {
        countEntriesBelow(item, path, sizes);
    } else if (_mode != OZCoreMode::clean) {
        addSize(attributes->size);
    }
    if (_mode != OZCoreMode::clean) {
        if (const auto moved = moveToBackup(item, path, attributes->type, &sizes); !moved) {
            noteStayed(path, moved.error(), StayedItem::counted);
            noteStayedBelow(item, path, moved.error());
        }
    } else if (removals != nullptr && attributes->type == FileType::directory) {
        removals->add([this, item, path = std::string(path)] {
            std::ignore = removeItem(item, path, StayedItem::counted);
        });
    } else {
        std::ignore = removeItem(item, path, StayedItem::counted);
    }
}

void OZCore::countEntriesBelow(const Item& folder, std::string_view path, SizeSum& sizes) {
    const auto enumerator = folder.enumerate();
    if (!enumerator) {
        return;
    }
    std::string entryPath = platform::pathPrefix(path);
    const size_t prefixLength = entryPath.size();
    while (const auto entry = enumerator->nextObject()) {
        entryPath.replace(prefixLength, std::string::npos, *entry);
        count(entryPath);
        if (_mode != OZCoreMode::clean) {
            sizes.add(enumerator->item());
        }
    }
}

void OZCore::quickDelItem(const Item& item, std::string_view path) {
    if (_mode == OZCoreMode::clean) {
        if (removeItem(item, path, StayedItem::uncounted)) {
            count(path);
        }
        return;
    }
    const auto attributes = item.attributes();
    if (!attributes) {
        noteUnreached(path, attributes.error());
        return;
    }
    addSize(attributes->size);
    if (const auto moved = moveToBackup(item, path, attributes->type)) {
        count(path);
    } else {
        noteStayed(path, moved.error(), StayedItem::uncounted);
    }
}

void OZCore::quickDelLangItem(const platform::Result<Item>& item, std::string_view path) {
    if (_mode == OZCoreMode::clean) {
        if (item && removeItem(*item, path, StayedItem::uncounted)) {
            count(path);
        }
        return;
    }
    if (const auto enumerator = item ? item->enumerate() : nullptr) {
        while (enumerator->nextObject()) {
            const auto attributes = enumerator->fileAttributes();
            addSize(attributes ? attributes->size : 0);
        }
    }
    // An analysis takes the caller's word for it that the folder is there.
    const auto moved = item ? moveToBackup(*item, path, FileType::directory) : std::unexpected(item.error());
    if (_mode == OZCoreMode::analyze || moved) {
        count(path);
    } else {
        noteUnreached(path, moved.error());
    }
}

// Nothing to do, and no error, outside of the test mode and for what is a backup already.
platform::Result<void> OZCore::moveToBackup(const Item& item, std::string_view path, FileType type,
                                            SizeSum* sizes) {
    if (_mode != OZCoreMode::test || endsInBackupExtension(path)) {
        return {};
    }
    const std::string backupName = std::string(item.name()).append(backupExtension);
    auto moved = item.rename(backupName);
    if (!moved) {
        // What gives way may be among what is still to be summed.
        if (sizes != nullptr) {
            std::ignore = sizes->total();
        }
        moved = item.renameReplacing(backupName);
    }
    if (type != FileType::regular) {
        forgetLastFolder();
    }
    return moved;
}

void OZCore::count(std::string_view path) {
    ++_fileCount;
    if (_cleanupLogger) {
        _cleanupLogger->logWithSpacer(path);
    }
}

void OZCore::addSize(uint64_t bytes) {
    _freedSpace += bytes;
}

void OZCore::delFolderContents(std::string_view folder, OnlyFiles onlyFiles) {
    delWithPattern(folder, std::nullopt, std::nullopt, std::nullopt, onlyFiles);
}

void OZCore::delFilesInFolderRecursive(std::string_view folder) {
    delFilesExcludingPatternsRecursive(folder, {});
}

void OZCore::delFilesExcludingPatternsRecursive(std::string_view folder, const NamePatterns& patterns) {
    auto opened = folderAtPath(folder);
    const auto enumerator = opened ? Item(*opened, ".").enumerate() : nullptr;
    if (!enumerator) {
        return;
    }
    FoundPaths found{.folder = *opened, .prefix = platform::pathPrefix(folder), .names = {}};
    while (const auto entry = enumerator->nextObject()) {
        if (enumerator->fileType() == FileType::regular && !matchDelExcludingPatterns(*entry, patterns)) {
            found.names.emplace_back(*entry);
        }
    }
    del(found);
}

bool OZCore::matchDelExcludingPatterns(std::string_view path, const NamePatterns& patterns) {
    const std::string_view name = platform::lastPathComponent(path);
    return anyOf(patterns.exactMatches, [&](auto exact) { return name == exact; }) ||
           anyOf(patterns.startPatterns, [&](auto start) { return name.starts_with(start); }) ||
           anyOf(patterns.middlePatterns, [&](auto middle) { return name.contains(middle); }) ||
           anyOf(patterns.endPatterns, [&](auto end) { return name.ends_with(end); });
}

void OZCore::delWithPattern(std::string_view folder, std::optional<std::string_view> startPattern,
                            std::optional<std::string_view> middlePattern,
                            std::optional<std::string_view> endPattern, OnlyFiles onlyFiles) {
    delEntriesWhere(folder, onlyFiles, [&](std::string_view name) {
        return (!startPattern || name.starts_with(*startPattern)) &&
               (!middlePattern || name.contains(*middlePattern)) &&
               (!endPattern || name.ends_with(*endPattern));
    });
}

void OZCore::delWithPatterns(std::string_view folder, const NamePatterns& patterns, OnlyFiles onlyFiles) {
    delEntriesWhere(folder, onlyFiles, [&](std::string_view name) {
        return anyOf(patterns.startPatterns, [&](auto start) { return name.starts_with(start); }) ||
               anyOf(patterns.middlePatterns, [&](auto middle) { return name.contains(middle); }) ||
               anyOf(patterns.endPatterns, [&](auto end) { return name.starts_with(end); });
    });
}

void OZCore::delEntriesWhere(std::string_view folder, OnlyFiles onlyFiles,
                             const std::function<bool(std::string_view name)>& isWanted) {
    auto opened = folderAtPath(folder);
    if (!opened) {
        return;
    }
    auto names = (*opened)->entries();
    if (!names) {
        return;
    }
    std::erase_if(*names, [&](const std::string& name) { return !isWanted(name); });
    const FoundPaths found{
        .folder = *opened, .prefix = platform::pathPrefix(folder), .names = std::move(*names)};
    if (onlyFiles == OnlyFiles::yes) {
        del(found);
    } else {
        // Entries of one folder lie beside each other: one goes while the next is counted.
        platform::BackgroundWork removals;
        SizeSum sizes;
        forEachItem(*this, found,
                    whereFound([&](const Item& item, auto path) { delrItem(item, path, sizes, &removals); }));
        addSize(sizes.total());
        removals.finish();
    }
}

bool OZCore::changeDir(std::string_view path) {
    if (!changeCurrentDirectoryPath(path)) {
        return false;
    }
    log(std::string("\n##\nIn dir: ").append(path).append("\n##\n\n"));
    return true;
}

void OZCore::delEmptyDirs(std::string_view folder) {
    auto opened = folderAtPath(folder);
    const auto enumerator = opened ? Item(*opened, ".").enumerate() : nullptr;
    if (!enumerator) {
        return;
    }
    struct Directory {
        std::string path;
        bool holdsFile = false;
    };
    std::vector<Directory> directories;
    // The folders that the walk is in, from the outermost in.
    std::vector<size_t> open;
    const auto keepOpen = [&] {
        std::ranges::for_each(open, [&](size_t index) { directories[index].holdsFile = true; });
    };
    for (size_t unread = 0;;) {
        const auto entry = enumerator->nextObject();
        // Of a folder that could not be read nobody knows that it is empty.
        if (std::exchange(unread, enumerator->unreadFolders()) != enumerator->unreadFolders()) {
            keepOpen();
        }
        if (!entry) {
            break;
        }
        while (!open.empty() && !entry->starts_with(platform::pathPrefix(directories[open.back()].path))) {
            open.pop_back();
        }
        if (enumerator->fileType() == FileType::directory) {
            open.push_back(directories.size());
            directories.push_back({std::string(*entry)});
        } else {
            keepOpen();
        }
    }
    FoundPaths found{.folder = *opened, .prefix = platform::pathPrefix(folder), .names = {}};
    for (auto& directory : directories) {
        if (!directory.holdsFile) {
            found.names.push_back(std::move(directory.path));
        }
    }
    delr(found);
}
