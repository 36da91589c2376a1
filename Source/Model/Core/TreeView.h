#pragma once

#include "Model/Core/FoundPaths.h"
#include "Platform/Files/FileManager.h"

#include <string>
#include <string_view>
#include <vector>

/// What a walk does with an entry that it meets.
enum class WalkDecision {
    passBy,
    take,
    /// Passes it by, and all that is below it.
    passByWithContent,
};

/// A device's tree for whoever only looks. Paths are as the file manager's, whose current directory they
/// share.
class TreeView {
  public:
    explicit TreeView(platform::FileManager fileManager)
        : _files(std::move(fileManager)) {}

    /// Follows links; a link to nothing does not exist.
    [[nodiscard]] bool fileExistsAtPath(std::string_view path, bool* isDirectory = nullptr) {
        return _files.fileExistsAtPath(path, isDirectory);
    }
    /// Of what a path leads to. The error tells what is not there from what nobody may look at.
    [[nodiscard]] platform::Result<platform::FileAttributes> attributesOfTargetAtPath(std::string_view path) {
        return _files.attributesOfTargetAtPath(path);
    }
    [[nodiscard]] platform::Result<std::vector<std::string>>
    contentsOfDirectoryAtPath(std::string_view path) {
        return _files.contentsOfDirectoryAtPath(path);
    }
    /// The same for a path relative to the folder that something was found in, reached through no link.
    [[nodiscard]] platform::Result<std::vector<std::string>>
    contentsOfDirectoryBelow(const FoundPaths& found, std::string_view relativePath);
    /// The content of a regular file, links followed.
    [[nodiscard]] platform::Result<std::string> contentsAtPath(std::string_view path) {
        return _files.contentsAtPath(path);
    }
    /// The device path without links. What cannot be resolved stays as it stands.
    [[nodiscard]] std::string stringByResolvingSymlinksInPath(std::string_view path) {
        return _files.stringByResolvingSymlinksInPath(path);
    }
    /// A folder's direct entries, found in that very folder; links on the way to it are followed.
    [[nodiscard]] platform::Result<FoundPaths> directEntries(std::string_view folder);
    /// The entries at any depth below a folder that `decide` takes, given each one's path relative to the
    /// folder and its type. Links are not followed.
    template <class Decide>
    [[nodiscard]] platform::Result<FoundPaths> findBelow(std::string_view folder, Decide decide) {
        auto opened = _files.folderAtPath(folder);
        if (!opened) {
            return std::unexpected(opened.error());
        }
        FoundPaths found(*opened, folder);
        const auto enumerator = (*opened)->enumerate();
        if (!enumerator) {
            return platform::lastError();
        }
        while (const auto entry = enumerator->nextObject()) {
            const WalkDecision decision = decide(*entry, enumerator->fileType());
            if (decision == WalkDecision::take) {
                found.names.emplace_back(*entry);
            } else if (decision == WalkDecision::passByWithContent) {
                enumerator->skipDescendants();
            }
        }
        return found;
    }

  private:
    platform::FileManager _files;
};
