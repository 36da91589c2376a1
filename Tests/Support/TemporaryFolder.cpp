#include "Tests/Support/TemporaryFolder.h"

#include "Tests/Support/Host.h"
#include "Tests/Support/TreeSnapshot.h"

#include <sys/statvfs.h>

namespace tests {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder(const std::string& below)
    : _path(below + "/ozvarine-test.XXXXXX") {
    require(::mkdtemp(_path.data()) != nullptr, _path);
}

TemporaryFolder::~TemporaryFolder() {
    // The host's tools go as deep as anything can lie.
    std::ignore = shell(fmt::format("test $(id -u) = 0 || chmod -R u+rwX '{0}'; rm -rf '{0}'", _path));
}

void TemporaryFolder::make(const std::string& lines) const {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream >> std::ws, line);) {
        const size_t mark = std::min({line.find(" -> "), line.find(": "), line.size()});
        const fs::path item = path(line.substr(0, mark));
        fs::create_directories(item.parent_path());
        if (line[mark] == ':') {
            std::ofstream(item, std::ios::binary) << line.substr(mark + 2);
        } else if (line[mark] == ' ') {
            fs::create_symlink(line.substr(mark + 4), item);
        } else if (!line.ends_with('/')) {
            throw std::invalid_argument("unclear line: " + line);
        }
    }
}

bool TemporaryFolder::exists(std::string_view relative) const {
    return fs::symlink_status(path(relative)).type() != fs::file_type::not_found;
}

std::string TemporaryFolder::content(std::string_view relative) const {
    return contentOf(path(relative));
}

std::string memoryFolder(uint64_t bytes) {
    const char* shared = "/dev/shm";
    struct statvfs status = {};
    const bool suits = ::access(shared, W_OK | X_OK) == 0 && ::statvfs(shared, &status) == 0 &&
                       (status.f_flag & ST_NOEXEC) == 0 && status.f_bavail * status.f_frsize > bytes;
    return suits ? shared : "/tmp";
}

void makeDeepFolders(int folder, size_t depth) {
    int here = ::dup(folder);
    for (size_t level = 0; level < depth; ++level) {
        require(::mkdirat(here, "d", 0755) == 0, "mkdirat");
        const int next = ::openat(here, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        require(next >= 0, "openat");
        ::close(here);
        here = next;
    }
    ::close(here);
}

} // namespace tests
