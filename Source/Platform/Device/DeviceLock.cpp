#include "Platform/Device/DeviceLock.h"

#include <charconv>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace platform {

namespace {

std::vector<std::string> words(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

template <class Number>
std::optional<Number> numberIn(std::string_view text, int base = 10) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string processPath(pid_t process, std::string_view name) {
    return fmt::format("/proc/{}/{}", process, name);
}

/// A line of the kernel's list of locks: "1: FLOCK ADVISORY WRITE 1234 08:01:5678 0 EOF".
struct ListedLock {
    pid_t process = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

std::optional<ListedLock> listedLock(const std::string& line) {
    const auto columns = words(line);
    if (columns.size() < 6 || columns[1] != "FLOCK") {
        return std::nullopt;
    }
    const std::string_view file = columns[5];
    const size_t minorStart = file.find(':') + 1;
    const size_t inodeStart = file.rfind(':') + 1;
    if (minorStart == 0 || inodeStart == minorStart) {
        return std::nullopt;
    }
    const auto process = numberIn<pid_t>(columns[4]);
    const auto majorNumber = numberIn<unsigned>(file.substr(0, minorStart - 1), 16);
    const auto minorNumber = numberIn<unsigned>(file.substr(minorStart, inodeStart - minorStart - 1), 16);
    const auto inode = numberIn<ino_t>(file.substr(inodeStart));
    // Processes of another world have no number here.
    if (!process || *process <= 0 || !majorNumber || !minorNumber || !inode) {
        return std::nullopt;
    }
    return ListedLock{*process, makedev(*majorNumber, *minorNumber), *inode};
}

bool hasOpened(pid_t process, const struct stat& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(processPath(process, "fd"), error), end;
         !error && entry != end; entry.increment(error)) {
        struct stat status {};
        if (::stat(entry->path().c_str(), &status) == 0 && status.st_dev == folder.st_dev &&
            status.st_ino == folder.st_ino) {
            return true;
        }
    }
    return false;
}

std::optional<pid_t> holderOf(const struct stat& folder) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        const auto lock = listedLock(line);
        // Layered file systems show other device numbers there than a file's own. A process that has gone may
        // have left its lock to a child.
        if (lock && lock->inode == folder.st_ino &&
            ::access(processPath(lock->process, "").c_str(), F_OK) == 0 &&
            (lock->device == folder.st_dev || hasOpened(lock->process, folder))) {
            return lock->process;
        }
    }
    return std::nullopt;
}

/// A user's number as the host knows it; none for one that this process's user namespace does not show.
std::optional<uid_t> hostUser(uid_t user) {
    std::ifstream map("/proc/self/uid_map");
    for (uint64_t inside = 0, outside = 0, count = 0; map >> inside >> outside >> count;) {
        if (user >= inside && user - inside < count) {
            return static_cast<uid_t>(outside + (user - inside));
        }
    }
    return std::nullopt;
}

std::string userOf(pid_t process) {
    struct stat status {};
    const auto user =
        ::stat(processPath(process, "").c_str(), &status) == 0 ? hostUser(status.st_uid) : std::nullopt;
    if (!user) {
        return "";
    }
    const auto* entry = ::getpwuid(*user);
    return " of user " + (entry != nullptr ? std::string(entry->pw_name) : fmt::to_string(*user));
}

std::optional<std::time_t> hostStart() {
    std::ifstream statistics("/proc/stat");
    for (std::string line; std::getline(statistics, line);) {
        const auto columns = words(line);
        if (columns.size() == 2 && columns[0] == "btime") {
            return numberIn<std::time_t>(columns[1]);
        }
    }
    return std::nullopt;
}

std::string startOf(pid_t process) {
    // Counted behind the program's name, which may hold anything, in ticks since the host's start.
    constexpr size_t startColumn = 19;
    std::ifstream file(processPath(process, "stat"));
    std::string line;
    std::getline(file, line);
    const size_t nameEnd = line.rfind(") ");
    const auto columns =
        nameEnd == std::string::npos ? std::vector<std::string>() : words(line.substr(nameEnd + 2));
    const auto ticks = columns.size() > startColumn ? numberIn<int64_t>(columns[startColumn]) : std::nullopt;
    const auto start = hostStart();
    if (!ticks || !start) {
        return "";
    }
    return fmt::format(", running since {:%Y-%m-%d %H:%M:%S}",
                       fmt::localtime(*start + *ticks / ::sysconf(_SC_CLK_TCK)));
}

} // namespace

Result<DeviceLock> DeviceLock::take(int rootFolder) {
    Descriptor folder(::openat(rootFolder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || ::flock(folder.get(), LOCK_EX | LOCK_NB) < 0) {
        return lastError();
    }
    return DeviceLock(std::move(folder));
}

bool DeviceLock::meansNoLocks(const std::error_code& error) {
    // EBADF: a network file system that locks only what is open for writing, as no folder can be.
    return error.value() == ENOLCK || error.value() == EOPNOTSUPP || error.value() == ENOSYS ||
           error.value() == EINVAL || error.value() == EBADF;
}

std::string DeviceLock::describeHolder(int rootFolder) {
    struct stat folder {};
    const auto process = ::fstat(rootFolder, &folder) == 0 ? holderOf(folder) : std::nullopt;
    return process ? fmt::format("process {}{}{}", *process, userOf(*process), startOf(*process))
                   : "another process";
}

} // namespace platform
