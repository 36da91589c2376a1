#include "Tests/Support/TemporaryFolder.h"

#include "Tests/Support/HostFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

namespace fs = std::filesystem;

void require(bool done, const std::string& what) {
    if (!done) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void run(std::vector<std::string> command) {
    std::vector<char*> arguments;
    for (auto& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0) {
        ::waitpid(child, nullptr, 0);
    }
}

std::string_view trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

std::string describe(const fs::path& path, const std::string& relative) {
    struct stat status = {};
    require(::lstat(path.c_str(), &status) == 0, path);
    std::string text = fmt::format("{} {:o} {}:{}", relative, status.st_mode, status.st_uid, status.st_gid);
    if (S_ISREG(status.st_mode)) {
        text += fmt::format(" {} {:x}", status.st_size, std::hash<std::string>()(contentOf(path)));
    } else if (S_ISLNK(status.st_mode)) {
        text += " -> " + fs::read_symlink(path).string();
    }
    return text;
}

} // namespace

TemporaryFolder::TemporaryFolder(const std::string& below)
    : _path(below + "/ozvarine-test.XXXXXX") {
    require(::mkdtemp(_path.data()) != nullptr, _path);
}

TemporaryFolder::~TemporaryFolder() {
    if (::geteuid() != 0) {
        run({"chmod", "-R", "u+rwX", "--", _path});
    }
    run({"rm", "-rf", "--", _path});
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
    } else if (const size_t same = line.find(" == "); same != std::string_view::npos) {
        const auto [item, other] = split(" == ", same);
        require(::link(path(other).c_str(), item.c_str()) == 0, item);
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
    std::vector<std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(_path)) {
        items.push_back(describe(entry.path(), entry.path().string().substr(_path.size() + 1)));
    }
    std::sort(items.begin(), items.end());
    return items;
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
