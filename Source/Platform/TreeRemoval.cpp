#include "Platform/TreeRemoval.h"

#include "Platform/Descriptor.h"
#include "Platform/DirectoryEntries.h"

#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr size_t openLevels = 64;
constexpr int readFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Empties one tree from the inside out. A level is a folder on the way: its files go while it is read, its
// folders are kept by name and entered one after the other.
class Remover {
  public:
    Result<void> run(int parent, const char* name) {
        Descriptor folder(::openat(parent, name, readFlags));
        if (!folder) {
            note(errno);
        } else {
            enter(std::move(folder), name);
            while (!_levels.empty()) {
                advance();
            }
        }
        if (::unlinkat(parent, name, AT_REMOVEDIR) < 0) {
            note(errno);
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
        dev_t device = 0;
        ino_t inode = 0;
    };

    void note(int error) {
        if (_firstError == 0) {
            _firstError = error;
        }
    }

    void enter(Descriptor folder, std::string name) {
        Level level{.descriptor = std::move(folder), .name = std::move(name)};
        const int descriptor = level.descriptor.get();
        const bool read = forEachEntry(descriptor, [&](const DirectoryEntry& entry) {
            if (entry.type == DT_DIR) {
                level.folders.emplace_back(entry.name);
            } else if (::unlinkat(descriptor, entry.name.data(), 0) < 0) {
                // The type byte may be missing, or the entry may have become a folder since.
                errno == EISDIR ? static_cast<void>(level.folders.emplace_back(entry.name)) : note(errno);
            }
        });
        if (!read) {
            note(errno);
        }
        _levels.push_back(std::move(level));
        if (_levels.size() > openLevels) {
            giveUpDescriptor(_levels[_levels.size() - 1 - openLevels]);
        }
    }

    void advance() {
        Level& level = _levels.back();
        if (level.folders.empty()) {
            leave();
            return;
        }
        std::string name = std::move(level.folders.back());
        level.folders.pop_back();
        Descriptor folder(::openat(level.descriptor.get(), name.c_str(), readFlags));
        if (folder) {
            enter(std::move(folder), std::move(name));
        } else if (::unlinkat(level.descriptor.get(), name.c_str(),
                              errno == ENOTDIR || errno == ELOOP ? 0 : AT_REMOVEDIR) < 0) {
            note(errno);
        }
    }

    void giveUpDescriptor(Level& level) {
        struct stat status{};
        if (!level.descriptor || ::fstat(level.descriptor.get(), &status) < 0) {
            return;
        }
        level.device = status.st_dev;
        level.inode = status.st_ino;
        level.descriptor.reset();
    }

    void leave() {
        const Level left = std::move(_levels.back());
        _levels.pop_back();
        if (_levels.empty()) {
            return;
        }
        Level& outer = _levels.back();
        if (!outer.descriptor && !findAgain(outer, left.descriptor.get())) {
            note(ENOENT);
            _levels.clear();
            return;
        }
        if (::unlinkat(outer.descriptor.get(), left.name.c_str(), AT_REMOVEDIR) < 0) {
            note(errno);
        }
    }

    static bool findAgain(Level& outer, int inner) {
        Descriptor parent(::openat(inner, "..", readFlags));
        struct stat status{};
        if (!parent || ::fstat(parent.get(), &status) < 0 || status.st_dev != outer.device ||
            status.st_ino != outer.inode) {
            return false;
        }
        outer.descriptor = std::move(parent);
        return true;
    }

    std::vector<Level> _levels;
    int _firstError = 0;
};

} // namespace

Result<void> removeTree(int parent, const char* name) {
    if (::unlinkat(parent, name, 0) == 0) {
        return {};
    }
    if (errno != EISDIR && errno != EPERM) {
        return lastError();
    }
    // A file that may not be removed gives EPERM as a folder does on some file systems.
    const int error = errno;
    struct stat status{};
    if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) < 0) {
        return lastError();
    }
    if (!S_ISDIR(status.st_mode)) {
        return failure(error);
    }
    return Remover().run(parent, name);
}

} // namespace platform
