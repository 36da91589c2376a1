#include "TreeWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ozdevice {
namespace {

using platform::Descriptor;

constexpr uid_t mobileUser = 501;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

constexpr std::pair<std::string_view, std::string_view> privateFolders[] = {
    {"/var", "/private/var"}, {"/tmp", "/private/var/tmp"}, {"/etc", "/private/etc"}};

[[noreturn]] void fail(std::string_view path) {
    throw std::system_error(errno, std::system_category(), std::string(path));
}

bool isBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::pair<std::string, std::string> splitLast(std::string_view path) {
    const std::string physical = TreeWriter::physicalPath(path);
    const size_t slash = physical.rfind('/');
    return {physical.substr(0, slash), physical.substr(slash + 1)};
}

/// Some age up to five months for a folder that nobody gave one.
int64_t ageByName(std::string_view path) {
    constexpr uint32_t fiveMonths = 150 * 24 * 3600;
    uint32_t hash = 2166136261;
    for (const char character : path) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619;
    }
    return hash % fiveMonths;
}

void writeAll(int file, std::string_view content, const std::string& path) {
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            fail(path);
        }
        content.remove_prefix(written < 0 ? 0 : static_cast<size_t>(written));
    }
}

} // namespace

TreeWriter::TreeWriter(const std::string& directory)
    : _directory(directory)
    , _root(::open(directory.c_str(), folderFlags))
    , _now(::time(nullptr))
    , _mayGiveAway(::geteuid() == 0) {
    if (!_root) {
        fail(directory);
    }
}

std::string TreeWriter::physicalPath(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    for (const auto& [logical, physical] : privateFolders) {
        if (isBelow(path, logical)) {
            return std::string(physical) + std::string(path.substr(logical.size()));
        }
    }
    return std::string(path);
}

std::string TreeWriter::hostPath(std::string_view path) const {
    return _directory + physicalPath(path);
}

Descriptor TreeWriter::enter(int parent, const std::string& name, const std::string& path) {
    Descriptor folder(::openat(parent, name.c_str(), folderFlags));
    if (!folder && errno == ENOENT && ::mkdirat(parent, name.c_str(), 0755) == 0) {
        _folderAges.emplace(path, ageByName(path));
        folder = Descriptor(::openat(parent, name.c_str(), folderFlags));
    }
    if (!folder) {
        fail(path);
    }
    return folder;
}

const Descriptor& TreeWriter::openFolder(const std::string& physical) {
    if (_current && physical == _currentPath) {
        return _current;
    }
    // Most entries lie near the one before, so the way down starts there where it can.
    const bool fromCurrent =
        _current && physical.size() > _currentPath.size() && isBelow(physical, _currentPath);
    Descriptor folder(::fcntl(fromCurrent ? _current.get() : _root.get(), F_DUPFD_CLOEXEC, 0));
    for (size_t start = fromCurrent ? _currentPath.size() + 1 : 1; start < physical.size();) {
        const size_t end = std::min(physical.find('/', start), physical.size());
        folder = enter(folder.get(), physical.substr(start, end - start), physical.substr(0, end));
        start = end + 1;
    }
    _current = std::move(folder);
    _currentPath = physical;
    _currentIsMobile = isBelow(physical, "/private/var/mobile");
    return _current;
}

void TreeWriter::finish(int file, mode_t mode, int64_t age) {
    if (_currentIsMobile && _mayGiveAway && ::fchown(file, mobileUser, mobileUser) != 0) {
        // Inside a namespace that maps one user only, no file can be given away.
        _mayGiveAway = false;
    }
    if (mode != 0) {
        std::ignore = ::fchmod(file, mode);
    }
    const std::array times{moment(age), moment(age)};
    std::ignore = ::futimens(file, times.data());
}

void TreeWriter::writeFile(int parent, const char* name, std::string_view content, FileTraits traits) {
    const Descriptor file(
        ::openat(parent, name, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, traits.mode));
    if (!file) {
        fail(fmt::format("{}/{}", _currentPath, name));
    }
    writeAll(file.get(), content, fmt::format("{}/{}", _currentPath, name));
    finish(file.get(), traits.mode == 0644 ? 0 : traits.mode, traits.age);
}

void TreeWriter::folder(std::string_view path, int64_t age) {
    const std::string physical = physicalPath(path);
    openFolder(physical);
    if (age != 0) {
        _folderAges[physical] = age;
    }
}

void TreeWriter::file(std::string_view path, std::string_view content, FileTraits traits) {
    const auto [parent, name] = splitLast(path);
    writeFile(openFolder(parent).get(), name.c_str(), content, traits);
}

void TreeWriter::link(std::string_view path, const std::string& target) {
    // The links of the root stand for "/private"; only they are not to be moved there themselves.
    const bool ofRoot = path.rfind('/') == 0;
    const auto [parent, name] =
        ofRoot ? std::pair(std::string(), std::string(path.substr(1))) : splitLast(path);
    const Descriptor& folder = openFolder(parent);
    if (::symlinkat(target.c_str(), folder.get(), name.c_str()) != 0) {
        fail(path);
    }
    if (_currentIsMobile && _mayGiveAway) {
        std::ignore = ::fchownat(folder.get(), name.c_str(), mobileUser, mobileUser, AT_SYMLINK_NOFOLLOW);
    }
}

void TreeWriter::series(std::string_view folder, const Series& series, std::string_view content) {
    const Descriptor& parent = openFolder(physicalPath(folder));
    constexpr int64_t hour = 3600;
    for (size_t number = series.first; number < series.first + series.count; ++number) {
        const std::string name = fmt::format("{}{:06}{}", series.prefix, number, series.suffix);
        const size_t size = 16 + number * 37 % (content.size() - 16);
        const auto age = static_cast<int64_t>(number * 7 % 2000) * hour;
        writeFile(parent.get(), name.c_str(), content.substr(0, size), {.age = age});
    }
}

void TreeWriter::adopt(std::string_view path, FileTraits traits) {
    const auto [parent, name] = splitLast(path);
    const Descriptor file(
        ::openat(openFolder(parent).get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!file) {
        fail(path);
    }
    finish(file.get(), traits.mode, traits.age);
}

void TreeWriter::dateFolders() {
    for (const auto& [path, age] : _folderAges) {
        finish(openFolder(path).get(), 0, age);
    }
}

} // namespace ozdevice
