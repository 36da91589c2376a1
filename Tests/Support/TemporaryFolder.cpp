#include "Tests/Support/TemporaryFolder.h"

#include "Tests/Support/HostFile.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TreeSnapshot.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <tuple>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tests {

namespace {

namespace fs = std::filesystem;

std::string_view trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

} // namespace

TemporaryFolder::TemporaryFolder(const std::string& below)
    : _path(below + "/ozvarine-test.XXXXXX") {
    require(::mkdtemp(_path.data()) != nullptr, _path);
}

TemporaryFolder::~TemporaryFolder() {
    // The host's tools go as deep as anything can lie.
    std::ignore = shell(fmt::format("test $(id -u) = 0 || chmod -R u+rwX '{0}'; rm -rf '{0}'", _path));
}

void TemporaryFolder::make(std::string_view lines) const {
    while (!lines.empty()) {
        const size_t end = std::min(lines.find('\n'), lines.size());
        if (const auto line = trimmed(lines.substr(0, end)); !line.empty()) {
            makeOne(line);
        }
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
}

void TemporaryFolder::makeOne(std::string_view line) const {
    const auto split = [&](std::string_view mark, size_t at) {
        const fs::path item = path(line.substr(0, at));
        fs::create_directories(item.parent_path());
        return std::pair(item, std::string(line.substr(at + mark.size())));
    };
    if (const size_t arrow = line.find(" -> "); arrow != std::string_view::npos) {
        const auto [item, target] = split(" -> ", arrow);
        require(::symlink(target.c_str(), item.c_str()) == 0, item);
    } else if (const size_t colon = line.find(": "); colon != std::string_view::npos) {
        const auto [item, text] = split(": ", colon);
        std::ofstream(item, std::ios::binary) << text;
    } else if (line.ends_with(" |")) {
        const auto [item, rest] = split(" |", line.size() - 2);
        require(::mkfifo(item.c_str(), 0644) == 0, item);
    } else if (line.ends_with('/')) {
        fs::create_directories(path(line));
    } else {
        throw std::invalid_argument("unclear line: " + std::string(line));
    }
}

bool TemporaryFolder::exists(std::string_view relative) const {
    struct stat status = {};
    return ::lstat(path(relative).c_str(), &status) == 0;
}

std::string TemporaryFolder::content(std::string_view relative) const {
    return contentOf(path(relative));
}

std::vector<std::string> TemporaryFolder::listing() const {
    std::vector<std::string> lines;
    for (const auto& [path, state] : snapshotOf(_path)) {
        const auto size = state.isFile() ? fmt::format("{} ", state.size) : "";
        lines.push_back(fmt::format("{} {:o} {}:{} {}{}", path, state.mode, state.owner, state.group, size,
                                    state.content));
    }
    std::ranges::sort(lines);
    return lines;
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
