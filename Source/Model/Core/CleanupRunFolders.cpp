// Primitives on what is in a folder.
#include "Model/Core/CleanupRun.h"

#include <algorithm>
#include <utility>

using platform::FileType;

namespace {

template <class Match>
bool anyOf(std::span<const std::string_view> patterns, Match match) {
    return std::ranges::any_of(patterns, match);
}

} // namespace

void CleanupRun::delFolderContents(std::string_view folder, OnlyFiles onlyFiles) {
    delWithPattern(folder, std::nullopt, std::nullopt, std::nullopt, onlyFiles);
}

void CleanupRun::delFilesInFolderRecursive(std::string_view folder) {
    delFilesExcludingPatternsRecursive(folder, {});
}

void CleanupRun::delFilesExcludingPatternsRecursive(std::string_view folder, const NamePatterns& patterns) {
    const auto found = _tree.findBelow(folder, [&](std::string_view path, FileType type) {
        return type == FileType::regular && !matchDelExcludingPatterns(path, patterns) ? WalkDecision::take
                                                                                       : WalkDecision::passBy;
    });
    if (found) {
        del(*found);
    } else {
        noteUnreached(folder, found.error());
    }
}

bool CleanupRun::matchDelExcludingPatterns(std::string_view path, const NamePatterns& patterns) {
    const std::string_view name = platform::lastPathComponent(path);
    return anyOf(patterns.exactMatches, [&](auto exact) { return name == exact; }) ||
           anyOf(patterns.startPatterns, [&](auto start) { return name.starts_with(start); }) ||
           anyOf(patterns.middlePatterns, [&](auto middle) { return name.contains(middle); }) ||
           anyOf(patterns.endPatterns, [&](auto end) { return name.ends_with(end); });
}

void CleanupRun::delWithPattern(std::string_view folder, std::optional<std::string_view> startPattern,
                                std::optional<std::string_view> middlePattern,
                                std::optional<std::string_view> endPattern, OnlyFiles onlyFiles) {
    delEntriesWhere(folder, onlyFiles, [&](std::string_view name) {
        return (!startPattern || name.starts_with(*startPattern)) &&
               (!middlePattern || name.contains(*middlePattern)) &&
               (!endPattern || name.ends_with(*endPattern));
    });
}

void CleanupRun::delWithPatterns(std::string_view folder, const NamePatterns& patterns, OnlyFiles onlyFiles) {
    delEntriesWhere(folder, onlyFiles, [&](std::string_view name) {
        return anyOf(patterns.startPatterns, [&](auto start) { return name.starts_with(start); }) ||
               anyOf(patterns.middlePatterns, [&](auto middle) { return name.contains(middle); }) ||
               anyOf(patterns.endPatterns, [&](auto end) { return name.starts_with(end); });
    });
}

void CleanupRun::delEntriesWhere(std::string_view folder, OnlyFiles onlyFiles,
                                 const std::function<bool(std::string_view name)>& isWanted) {
    auto found = _tree.directEntries(folder);
    if (!found) {
        noteUnreached(folder, found.error());
        return;
    }
    std::erase_if(found->names, [&](const std::string& name) { return !isWanted(name); });
    if (onlyFiles == OnlyFiles::yes) {
        del(*found);
    } else {
        delrEntries(*found);
    }
}

void CleanupRun::delEmptyDirs(std::string_view folder) {
    auto opened = _files.folderAtPath(folder);
    const auto enumerator = opened ? (*opened)->enumerate() : nullptr;
    if (!opened) {
        noteUnreached(folder, opened.error());
    }
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
    FoundPaths found(*opened, folder);
    for (auto& directory : directories) {
        if (!directory.holdsFile) {
            found.names.push_back(std::move(directory.path));
        }
    }
    delr(found);
}
