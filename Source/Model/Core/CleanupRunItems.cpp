#include "Model/Core/CleanupRun.h"
#include "Model/Core/ItemLooks.h"
#include "Model/Core/RunRecord.h"
#include "Model/Core/SizeSum.h"
#include "Platform/Device/Device.h"
#include "Platform/Threads/BackgroundWork.h"

#include <functional>

using platform::FileType;
using platform::Item;

template <class Work>
void CleanupRun::forEachItem(const Paths& paths, Work work) {
    for (const auto& path : paths) {
        work(_files.itemAtPath(path), path);
    }
}

template <class Work>
void CleanupRun::forEachItem(const FoundPaths& found, Work work) {
    std::string path = found.prefix;
    for (const auto& name : found.names) {
        path.replace(found.prefix.size(), std::string::npos, name);
        work(_files.itemBelow(found._folder, name), path);
    }
}

template <class Work>
auto CleanupRun::whereFound(Work work) {
    return [this, work](const platform::Result<Item>& item, std::string_view path) {
        if (item) {
            work(*item, path);
        } else {
            noteUnreached(path, item.error());
        }
    };
}

void CleanupRun::del(const Paths& paths) {
    forEachItem(paths, whereFound([&](const Item& item, std::string_view path) { delItem(item, path); }));
}

void CleanupRun::del(const FoundPaths& found) {
    if (_mode == OZCoreMode::analyze) {
        ItemLooks looks(_device.backgroundQueue(), _files, found);
        countLooks(looks, [](const ItemLook& look) { return look.type == FileType::regular; });
        return;
    }
    forEachItem(found, whereFound([&](const Item& item, std::string_view path) { delItem(item, path); }));
}

void CleanupRun::delr(const Paths& paths) {
    delrEach(paths);
}

void CleanupRun::delr(const FoundPaths& found) {
    delrEach(found);
}

// A later item may lie inside of a folder that has been walked and is still there: its size is read before it
// gets another name.
template <class List>
void CleanupRun::delrEach(const List& list) {
    SizeSum sizes(_device.backgroundQueue());
    forEachItem(list, whereFound([&](const Item& item, std::string_view path) {
                    delrItem(item, path, sizes);
                    if (_mode == OZCoreMode::test) {
                        std::ignore = sizes.total();
                    }
                }));
    addSize(sizes.total());
}

// Entries of one folder lie beside each other: one goes while the next is counted.
void CleanupRun::delrEntries(const FoundPaths& entries) {
    platform::BackgroundWork removals(_device.backgroundQueue());
    SizeSum sizes(_device.backgroundQueue());
    forEachItem(entries, whereFound([&](const Item& item, std::string_view path) {
                    delrItem(item, path, sizes, &removals);
                }));
    addSize(sizes.total());
    removals.finish();
}

void CleanupRun::quickDel(const Paths& paths) {
    forEachItem(paths,
                whereFound([&](const Item& item, std::string_view path) { quickDelItem(item, path); }));
}

void CleanupRun::quickDel(const FoundPaths& found) {
    if (_mode == OZCoreMode::analyze) {
        ItemLooks looks(_device.backgroundQueue(), _files, found);
        countLooks(looks);
        return;
    }
    forEachItem(found,
                whereFound([&](const Item& item, std::string_view path) { quickDelItem(item, path); }));
}

void CleanupRun::quickDelFound(const std::vector<std::string>& arguments) {
    if (_mode != OZCoreMode::analyze) {
        quickDel(find(arguments));
        return;
    }
    std::optional<ItemLooks> looks;
    search({arguments.front()}, {arguments.begin() + 1, arguments.end()},
           [&](const FoundPaths& home, std::string_view name) {
               if (!looks) {
                   looks.emplace(_device.backgroundQueue(), _files, home);
               }
               looks->add(name);
           });
    if (looks) {
        countLooks(*looks);
    }
}

void CleanupRun::countLooks(ItemLooks& looks, const std::function<bool(const ItemLook&)>& isWanted) {
    looks.visit([&](std::string_view path, const ItemLook& look) {
        if (!isWanted || isWanted(look)) {
            addSize(look.size);
            count(path);
        }
    });
}

void CleanupRun::quickDelLang(const Paths& paths) {
    forEachItem(paths, [&](const auto& item, std::string_view path) { quickDelLangItem(item, path); });
}

void CleanupRun::quickDelLang(const FoundPaths& found) {
    forEachItem(found, [&](const auto& item, std::string_view path) { quickDelLangItem(item, path); });
}

void CleanupRun::removeLinks(const FoundPaths& links) {
    if (_mode != OZCoreMode::clean) {
        return;
    }
    forEachItem(links, whereFound([&](const Item& item, std::string_view path) {
                    const auto attributes = item.attributes();
                    if (attributes && attributes->type == FileType::symbolicLink) {
                        std::ignore = removeItem(item, path, StayedItem::uncounted);
                    }
                }));
}

void CleanupRun::delItem(const Item& item, std::string_view path) {
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

void CleanupRun::delrItem(const Item& item, std::string_view path, SizeSum& sizes,
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

void CleanupRun::countEntriesBelow(const Item& folder, std::string_view path, SizeSum& sizes) {
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

void CleanupRun::quickDelItem(const Item& item, std::string_view path) {
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

void CleanupRun::quickDelLangItem(const platform::Result<Item>& item, std::string_view path) {
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

void CleanupRun::count(std::string_view path) {
    _record.count(path);
}

void CleanupRun::addSize(uint64_t bytes) {
    _record.addSize(bytes);
}
