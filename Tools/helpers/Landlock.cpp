#include "Landlock.h"

#include <array>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// By the version of the interface that brought them; the headers of the build machine may be older.
constexpr std::array<uint64_t, 5> rightsByVersion = {
    (uint64_t{1} << 13U) - 1, // the first thirteen
    uint64_t{1} << 13U,       // moving to another folder
    uint64_t{1} << 14U,       // truncating
    0,
    uint64_t{1} << 15U, // controlling devices
};

constexpr uint64_t execution = LANDLOCK_ACCESS_FS_EXECUTE;
constexpr uint64_t reading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t ofFiles = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE |
                             LANDLOCK_ACCESS_FS_WRITE_FILE | rightsByVersion[2] | rightsByVersion[4];

} // namespace

Landlock::Landlock() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    for (size_t index = 0; index < rightsByVersion.size() && static_cast<long>(index) < version; ++index) {
        _handled |= rightsByVersion[index];
    }
    const landlock_ruleset_attr attributes{.handled_access_fs = _handled};
    _rules = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
}

Landlock::~Landlock() {
    if (_rules >= 0) {
        ::close(_rules);
    }
}

void Landlock::allowAllButExecution(int folder) {
    allow(folder, _handled & ~execution);
}

void Landlock::allowReadingAndExecuting(std::span<const char* const> paths) {
    allow(paths, reading | execution);
}

void Landlock::allowReading(std::span<const char* const> paths) {
    allow(paths, reading);
}

void Landlock::allowReadingAndWriting(std::span<const char* const> paths) {
    allow(paths, reading | LANDLOCK_ACCESS_FS_WRITE_FILE | rightsByVersion[2]);
}

bool Landlock::enforce() const {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::syscall(SYS_landlock_restrict_self, _rules, 0) == 0;
}

void Landlock::allow(std::span<const char* const> paths, uint64_t access) {
    for (const char* path : paths) {
        const int file = ::open(path, O_PATH | O_CLOEXEC);
        if (file >= 0) {
            allow(file, access);
            ::close(file);
        }
    }
}

void Landlock::allow(int file, uint64_t access) {
    struct stat status = {};
    if (::fstat(file, &status) != 0) {
        return;
    }
    // The kernel refuses a folder's rights on anything else.
    const uint64_t fitting = S_ISDIR(status.st_mode) ? access : access & ofFiles;
    const landlock_path_beneath_attr rule{.allowed_access = fitting & _handled, .parent_fd = file};
    ::syscall(SYS_landlock_add_rule, _rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}
