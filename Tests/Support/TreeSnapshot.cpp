#include "Tests/Support/TreeSnapshot.h"

#include "Tests/Support/Host.h"

#include <dirent.h>

namespace tests {

namespace {

// Only what is data is read: a hole may be larger than the disk.
std::string hashOfFile(int folder, const char* name) {
    const int file = ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    require(file >= 0, name);
    size_t hash = 0;
    std::string chunk(65536, '\0');
    for (off_t data = 0; (data = ::lseek(file, data, SEEK_DATA)) >= 0;) {
        const off_t hole = ::lseek(file, data, SEEK_HOLE);
        while (data < hole) {
            const ssize_t count = ::pread(
                file, chunk.data(), std::min<size_t>(chunk.size(), static_cast<size_t>(hole - data)), data);
            require(count > 0, name);
            const std::string_view bytes(chunk.data(), static_cast<size_t>(count));
            // Zeros count as a hole: a copy may have made one of them.
            if (bytes.find_first_not_of('\0') != std::string_view::npos) {
                hash = hash * 31 + std::hash<std::string_view>()(bytes) + static_cast<size_t>(data);
            }
            data += count;
        }
    }
    ::close(file);
    return fmt::format("{:x}", hash);
}

std::string targetOfLink(int folder, const char* name) {
    std::string target(4096, '\0');
    const ssize_t length = ::readlinkat(folder, name, target.data(), target.size());
    require(length >= 0, name);
    target.resize(static_cast<size_t>(length));
    return target;
}

ItemState stateOf(int folder, const char* name, const struct stat& status) {
    ItemState state{.mode = status.st_mode,
                    .owner = status.st_uid,
                    .group = status.st_gid,
                    .size = status.st_size,
                    .modified = status.st_mtim,
                    .content = {}};
    if (state.isFile()) {
        state.content = hashOfFile(folder, name);
    } else if (state.isLink()) {
        state.content = targetOfLink(folder, name);
    }
    return state;
}

// `folder` is taken over. Paths may be longer than the system takes them.
void walk(int folder, const std::string& prefix, TreeSnapshot& snapshot) {
    const auto close = [](DIR* entries) { ::closedir(entries); };
    const std::unique_ptr<DIR, decltype(close)> entries(::fdopendir(folder), close);
    require(entries != nullptr, prefix);
    while (const dirent* entry = ::readdir(entries.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        struct stat status = {};
        require(::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0, prefix + name);
        snapshot[prefix + name] = stateOf(folder, name.c_str(), status);
        if (S_ISDIR(status.st_mode)) {
            const int below = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            require(below >= 0, prefix + name);
            walk(below, prefix + name + "/", snapshot);
        }
    }
}

} // namespace

void require(bool done, const std::string& what) {
    if (!done) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

bool ItemState::operator==(const ItemState& other) const {
    const bool sameKind = mode == other.mode && owner == other.owner && group == other.group;
    return sameKind &&
           (isFolder() || (size == other.size && modified.tv_sec == other.modified.tv_sec &&
                           modified.tv_nsec == other.modified.tv_nsec && content == other.content));
}

TreeSnapshot snapshotOf(const std::string& hostFolder) {
    const int folder = ::open(hostFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(folder >= 0, hostFolder);
    TreeSnapshot snapshot;
    walk(folder, "", snapshot);
    return snapshot;
}

TreeSnapshot withoutBackupNames(const TreeSnapshot& tree) {
    TreeSnapshot result;
    for (const auto& [path, state] : tree) {
        if (!result.emplace(replaced(path, ".OzvarineBackup", ""), state).second) {
            throw std::runtime_error("two items of one name: " + path);
        }
    }
    return result;
}

std::string describe(const std::string& path, const ItemState& state) {
    return fmt::format("{} {:o} {}:{} {} {}.{:09} {}", path, state.mode, state.owner, state.group, state.size,
                       state.modified.tv_sec, state.modified.tv_nsec, state.content);
}

} // namespace tests
