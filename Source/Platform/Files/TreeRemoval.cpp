#include "Platform/Files/TreeRemoval.h"

#include "Platform/Files/Descriptor.h"
#include "Platform/Files/DirectoryEntries.h"

#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

bool isFolder(int parent, const char* name) {
    struct stat status = {};
    return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

// Tells what became of an attempt to unlink. The type byte may be missing, or the entry may have become a
// folder since it was listed; some file systems say EPERM of a folder.
bool failedForBeingFolder(int error, int parent, const char* name) {
    return error == EISDIR || (error == EPERM && isFolder(parent, name));
}

// Empties one tree from the inside out. A level is a folder on the way: its files go while it is read, its
// folders are kept by name and entered one after the other.
class Remover {
  public:
    explicit Remover(const RemovalFailureHandler& failed)
        : _failed(failed) {}

    Result<void> run(int parent, const char* name) {
        removeFolder(parent, name);
        while (!_levels.empty()) {
            advance(parent);
        }
        if (_firstError != 0) {
            return failure(_firstError);
        }
        return {};
    }

  private:
    struct Level {
        Descriptor descriptor;
        std::string name;
        std::vector<std::string> folders;
        FolderIdentity identity;
        // Of what stays inside.
        int firstError = 0;
    };

    // An entry of the innermost folder stays; the outermost one is the caller's to name.
    void note(int error, std::string_view name) {
        noteError(error);
        if (_failed && error != ENOENT && !_levels.empty()) {
            std::string path;
            for (size_t index = 1; index < _levels.size(); ++index) {
                path.append(_levels[index].name).append("/");
            }
            _failed(path.append(name), std::error_code(error, std::system_category()));
        }
    }

    void noteError(int error) {
        if (error == ENOENT) {
            return;
        }
        if (_firstError == 0) {
            _firstError = error;
        }
        if (!_levels.empty() && _levels.back().firstError == 0) {
            _levels.back().firstError = error;
        }
    }

    // Enters the folder; what cannot be entered may still be empty, or no folder any more.
    void removeFolder(int parent, std::string name) {
        Descriptor folder(::openat(parent, name.c_str(), readFolderFlags));
        if (folder) {
            enter(std::move(folder), std::move(name));
            return;
        }
        const int error = errno;
        const int flags = error == ENOTDIR || error == ELOOP ? 0 : AT_REMOVEDIR;
        if (::unlinkat(parent, name.c_str(), flags) < 0) {
            note(errno == ENOTEMPTY || errno == EEXIST ? error : errno, name);
        }
    }

    void enter(Descriptor folder, std::string name) {
        Level& level = _levels.emplace_back(
            Level{.descriptor = std::move(folder), .name = std::move(name), .folders = {}, .identity = {}});
        const int descriptor = level.descriptor.get();
        const bool read = forEachEntry(descriptor, [&](const DirectoryEntry& entry) {
            if (entry.type == DT_DIR) {
                level.folders.emplace_back(entry.name);
            } else if (::unlinkat(descriptor, entry.name.data(), 0) < 0) {
                const int error = errno;
                if (failedForBeingFolder(error, descriptor, entry.name.data())) {
                    level.folders.emplace_back(entry.name);
                } else {
                    note(error, entry.name);
                }
            }
        });
        if (!read) {
            noteError(errno);
        }
        if (_levels.size() > openLevels) {
            giveUpDescriptor(_levels[_levels.size() - 1 - openLevels]);
        }
    }

    void advance(int parent) {
        Level& level = _levels.back();
        if (level.folders.empty()) {
            leave(parent);
            return;
        }
        std::string name = std::move(level.folders.back());
        level.folders.pop_back();
        removeFolder(level.descriptor.get(), std::move(name));
    }

    static void giveUpDescriptor(Level& level) {
        struct stat status = {};
        if (level.descriptor && ::fstat(level.descriptor.get(), &status) == 0) {
            level.identity = FolderIdentity::of(status);
            level.descriptor.reset();
        }
    }

    void leave(int parent) {
        const Level left = std::move(_levels.back());
        _levels.pop_back();
        if (!_levels.empty()) {
            Level& outer = _levels.back();
            if (!outer.descriptor) {
                outer.descriptor = outer.identity.openAbove(left.descriptor.get());
            }
            if (!outer.descriptor) {
                noteError(ESTALE);
                _levels.clear();
                return;
            }
            parent = outer.descriptor.get();
        }
        if (::unlinkat(parent, left.name.c_str(), AT_REMOVEDIR) < 0) {
            note(left.firstError != 0 && errno != ENOENT ? left.firstError : errno, left.name);
        }
    }

    const RemovalFailureHandler& _failed;
    std::vector<Level> _levels;
    int _firstError = 0;
};

} // namespace

Result<void> removeTree(int parent, const char* name, const RemovalFailureHandler& failed) {
    const std::string_view entry(name);
    // A folder seen from inside would be emptied before the system refused to remove it.
    if (entry == "." || entry == ".." || entry.find('/') != std::string_view::npos) {
        return failure(EINVAL);
    }
    if (::unlinkat(parent, name, 0) == 0) {
        return {};
    }
    const int error = errno;
    if (!failedForBeingFolder(error, parent, name)) {
        return failure(error);
    }
    return Remover(failed).run(parent, name);
}

} // namespace platform
